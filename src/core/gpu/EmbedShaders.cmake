# Writes a C++ source holding every GLSL file of SHADER_DIR as a raw string,
# keyed by the file name without its extension (the function name); the
# extension gives the stage: .vert, .frag, .comp.
file(GLOB shaders ${SHADER_DIR}/*.vert ${SHADER_DIR}/*.frag ${SHADER_DIR}/*.comp)
list(SORT shaders)
set(body "")
set(count 0)
foreach(shader IN LISTS shaders)
  get_filename_component(name ${shader} NAME_WE)
  get_filename_component(extension ${shader} LAST_EXT)
  if(extension STREQUAL ".vert")
    set(stage vertex)
  elseif(extension STREQUAL ".frag")
    set(stage fragment)
  else()
    set(stage compute)
  endif()
  file(READ ${shader} source)
  string(FIND "${source}" ")FLKGLSL\"" clash)
  if(NOT clash EQUAL -1)
    message(FATAL_ERROR "${shader} contains the raw string delimiter")
  endif()
  string(APPEND body "    {\"${name}\", Stage::${stage}, R\"FLKGLSL(${source})FLKGLSL\"},\n")
  math(EXPR count "${count} + 1")
endforeach()
set(content "// Generated from src/core/gpu/shaders by EmbedShaders.cmake; do not edit.
#include \"core/gpu/FLKShaderLibrary.h\"

#include <cstddef>

namespace FLKShaderLibrary {
extern const Function kFunctions[];
extern const size_t kFunctionCount;
const Function kFunctions[] = {
${body}};
const size_t kFunctionCount = ${count};
}  // namespace FLKShaderLibrary
")
# Only touch the output when it changes, so unchanged shaders do not rebuild.
if(EXISTS ${OUTPUT})
  file(READ ${OUTPUT} previous)
endif()
if(NOT "${previous}" STREQUAL "${content}")
  file(WRITE ${OUTPUT} "${content}")
endif()
