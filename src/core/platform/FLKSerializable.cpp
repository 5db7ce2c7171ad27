#include "core/platform/FLKSerializable.h"

#include <fstream>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <unordered_map>
#include <vector>

#include "core/platform/FLKAtomicFile.h"

namespace {
struct Registry {
    std::mutex mutex;
    std::unordered_map<std::string, FLKClassRegistry::Factory> factories;  // guarded by mutex
};

Registry& registry() {
    static Registry* r = new Registry;  // never destroyed: registrations run during static init
    return *r;
}
}  // namespace

void FLKClassRegistry::registerClass(const std::string& name, Factory factory) {
    auto& r = registry();
    std::lock_guard lock(r.mutex);
    r.factories[name] = std::move(factory);
}

const FLKClassRegistry::Factory* FLKClassRegistry::factoryForName(const std::string& name) {
    auto& r = registry();
    std::lock_guard lock(r.mutex);
    auto it = r.factories.find(name);
    return it == r.factories.end() ? nullptr : &it->second;
}

namespace flk {

std::shared_ptr<FLKSerializable> objectWithDictionary(const FLKJSON& dictionary) {
    if (!dictionary.is_object()) return nullptr;
    auto it = dictionary.find("className");
    if (it == dictionary.end() || !it->is_string()) return nullptr;
    const auto* factory = FLKClassRegistry::factoryForName(it->get<std::string>());
    if (!factory) return nullptr;
    return (*factory)(dictionary);
}

std::optional<std::string> unknownClassName(const FLKJSON& json) {
    // Without recursion: a hostile file may nest deeper than the stack reaches.
    std::vector<const FLKJSON*> pending{&json};
    while (!pending.empty()) {
        const FLKJSON& value = *pending.back();
        pending.pop_back();
        if (value.is_object()) {
            auto name = value.find("className");
            if (name != value.end() && name->is_string() && !FLKClassRegistry::isRegistered(name->get<std::string>())) {
                return name->get<std::string>();
            }
        }
        if (value.is_structured()) {
            for (const auto& element : value) pending.push_back(&element);
        }
    }
    return std::nullopt;
}

std::string absoluteString(const std::filesystem::path& url) {
    std::error_code ec;
    auto absolute = std::filesystem::absolute(url, ec);
    return "file://" + (ec ? url : absolute).lexically_normal().string();
}

std::optional<FLKJSON> dictionaryFromJSONAtURL(const std::filesystem::path& url, FLKError* error) {
    std::ifstream in(url, std::ios::binary);
    if (!in) {
        flk::setError(error, FLKError::make("FLKSerializationErrorDomain", 260, "The file couldn't be opened.",
                                            "No such file: " + url.string()));
        return std::nullopt;
    }
    std::stringstream buffer;
    buffer << in.rdbuf();
    try {
        return FLKJSON::parse(buffer.str());
    } catch (const FLKJSON::exception& e) {
        flk::setError(error, FLKError::make("FLKSerializationErrorDomain", 3840,
                                            "The data couldn't be read because it isn't in the correct format.",
                                            e.what()));
        return std::nullopt;
    }
}

std::shared_ptr<FLKSerializable> serializableFromJSONAtURL(const std::filesystem::path& url) {
    auto json = dictionaryFromJSONAtURL(url);
    std::shared_ptr<FLKSerializable> object;
    if (json) {
        try {
            object = objectWithDictionary(*json);
        } catch (const FLKJSON::exception&) {
            object = nullptr;  // a value of the wrong type inside: the file is unreadable
        }
    }
    if (!object) throw std::invalid_argument("Error reading file " + absoluteString(url));
    return object;
}

bool writeJSONToURL(const FLKJSON& json, const std::filesystem::path& url, FLKError* error) {
    std::string data;
    try {
        data = json.dump();
    } catch (const FLKJSON::exception& e) {
        flk::setError(error, FLKError::make("FLKSerializationErrorDomain", 1, "The object couldn't be encoded.", e.what()));
        return error == nullptr;
    }
    return flk::writeFileAtomically(url, data, error);
}

bool writeToJSONAtURL(const FLKSerializable& object, const std::filesystem::path& url, FLKError* error) {
    return writeJSONToURL(object.serialized(), url, error);
}

}  // namespace flk
