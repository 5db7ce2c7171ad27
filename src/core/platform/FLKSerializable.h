#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/platform/FLKError.h"
#include "core/platform/FLKJSON.h"

// Every persistent model object. `serialized()` always carries "className"
// with the value of `className()`, the name the class registered under, so a
// subclass stored in a slot typed by its base reads back as itself.
class FLKSerializable {
public:
    virtual ~FLKSerializable() = default;
    virtual FLKJSON serialized() const = 0;
    virtual std::string className() const = 0;
};

// Name -> factory. Each serialisable class registers once, in its .cpp:
//   FLK_REGISTER_SERIALIZABLE(FLKPlane);
// which requires `static std::shared_ptr<FLKPlane> FLKPlane::newWithDictionary(const FLKJSON&)`.
class FLKClassRegistry {
public:
    using Factory = std::function<std::shared_ptr<FLKSerializable>(const FLKJSON&)>;

    static void registerClass(const std::string& name, Factory factory);
    // nullptr when no class of that name is known.
    static const Factory* factoryForName(const std::string& name);
    static bool isRegistered(const std::string& name) { return factoryForName(name) != nullptr; }

    template <class T>
    struct Registrar {
        explicit Registrar(const char* name) {
            registerClass(name, [](const FLKJSON& d) -> std::shared_ptr<FLKSerializable> {
                return T::newWithDictionary(d);
            });
        }
    };
};

#define FLK_REGISTER_SERIALIZABLE(Class) \
    static const FLKClassRegistry::Registrar<Class> flkRegistrar_##Class(#Class)

namespace flk {

// Builds the object of the class named under "className". nullptr when the
// dictionary names no known class (or is not a dictionary).
std::shared_ptr<FLKSerializable> objectWithDictionary(const FLKJSON& dictionary);

template <class T>
std::shared_ptr<T> objectWithDictionary(const FLKJSON& dictionary) {
    return std::dynamic_pointer_cast<T>(objectWithDictionary(dictionary));
}

// A "className" in the tree, at the top or in any object inside, that no
// registered class answers to; nullopt when all are known. Readers
// of untrusted files check this first: an array element of an unknown class
// would otherwise be dropped without a word.
std::optional<std::string> unknownClassName(const FLKJSON& json);

// "file:///abs/path": how locations appear in messages.
std::string absoluteString(const std::filesystem::path& url);

// Reads the file, parses it and builds the class it names. Throws
// std::invalid_argument("Error reading file <absolute URL>") when the file is
// missing, is not JSON, or names no known class.
std::shared_ptr<FLKSerializable> serializableFromJSONAtURL(const std::filesystem::path& url);

// As above, and also throws when the object is not a T.
template <class T>
std::shared_ptr<T> serializableFromJSONAtURL(const std::filesystem::path& url);

// Compact JSON, missing folders created, written atomically. Errors go to
// `error` (first failure wins); without one a failure is silent, as callers
// that care pass an error.
bool writeToJSONAtURL(const FLKSerializable& object, const std::filesystem::path& url, FLKError* error = nullptr);
bool writeJSONToURL(const FLKJSON& json, const std::filesystem::path& url, FLKError* error = nullptr);

// The top-level JSON value of a file, or nullopt with the error set.
std::optional<FLKJSON> dictionaryFromJSONAtURL(const std::filesystem::path& url, FLKError* error = nullptr);

// `serialized()` of each element, in order.
template <class Container>
FLKJSON serializedArray(const Container& objects) {
    FLKJSON array = FLKJSON::array();
    for (const auto& o : objects) array.push_back(o->serialized());
    return array;
}

// One object per dictionary, in order; elements naming no known class (or
// not a T) are left out.
template <class T = FLKSerializable>
std::vector<std::shared_ptr<T>> arrayWithSerializedArray(const FLKJSON& array) {
    std::vector<std::shared_ptr<T>> out;
    if (!array.is_array()) return out;
    for (const auto& d : array) {
        if (auto o = objectWithDictionary<T>(d)) out.push_back(std::move(o));
    }
    return out;
}

}  // namespace flk

template <class T>
std::shared_ptr<T> flk::serializableFromJSONAtURL(const std::filesystem::path& url) {
    auto object = std::dynamic_pointer_cast<T>(serializableFromJSONAtURL(url));
    if (!object) throw std::invalid_argument("Error reading file " + absoluteString(url));
    return object;
}
