#pragma once

#include <string>
#include <vector>

// The GLSL sources built into the program, looked up by function name
// ("vertex_textured", "fragment_textured_yuv", ...).
namespace FLKShaderLibrary {
enum class Stage { vertex, fragment, compute };

struct Function {
    const char* name;
    Stage stage;
    const char* source;
};

// Null when there is no function of that name.
const Function* functionWithName(const std::string& name);
// The function's source with every line "#pragma include NAME" replaced by
// the source of the library function NAME: GLSL shared between shaders.
std::string expandedSource(const Function& function);
std::vector<std::string> functionNames();
}  // namespace FLKShaderLibrary
