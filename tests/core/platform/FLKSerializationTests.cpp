#include <gtest/gtest.h>

#include <fstream>

#include "core/platform/FLKFileSerializationContext.h"
#include "core/platform/FLKSerializable.h"

namespace {
std::filesystem::path scratch(const std::string& name) {
    auto dir = std::filesystem::path(std::getenv("FLICKWELL_HOME")) / "serialization";
    std::filesystem::create_directories(dir);
    return dir / name;
}

std::string readAll(const std::filesystem::path& p) {
    std::ifstream in(p);
    return {std::istreambuf_iterator<char>(in), {}};
}

class TestBase : public FLKSerializable {
public:
    double value = 0;
    FLKJSON serialized() const override { return {{"className", className()}, {"value", value}}; }
    std::string className() const override { return "TestBase"; }
    static std::shared_ptr<TestBase> newWithDictionary(const FLKJSON& d) {
        auto o = std::make_shared<TestBase>();
        o->value = d.value("value", 0.0);
        return o;
    }
};

class TestDerived : public TestBase {
public:
    std::string className() const override { return "TestDerived"; }
    static std::shared_ptr<TestDerived> newWithDictionary(const FLKJSON& d) {
        auto o = std::make_shared<TestDerived>();
        o->value = d.value("value", 0.0);
        return o;
    }
};
FLK_REGISTER_SERIALIZABLE(TestBase);
FLK_REGISTER_SERIALIZABLE(TestDerived);

struct Folder : FLKSerializationFile {
    std::filesystem::path folder;
    explicit Folder(std::filesystem::path f) : folder(std::move(f)) {}
    std::filesystem::path folderURL() const override { return folder; }
};
}  // namespace

TEST(FLKSerializable, SubclassRoundTripsThroughItsBaseWithExactReals) {
    TestDerived d;
    d.value = 0.1 + 0.2;  // not representable in a short decimal
    auto url = scratch("nested/folders/derived.json");
    FLKError error;
    ASSERT_TRUE(flk::writeToJSONAtURL(d, url, &error)) << error.fullMessage();
    auto content = readAll(url);
    EXPECT_EQ(content.find('\n'), std::string::npos);
    EXPECT_EQ(content.find("  "), std::string::npos);
    auto back = flk::serializableFromJSONAtURL<TestBase>(url);
    EXPECT_EQ(back->className(), "TestDerived");
    EXPECT_NE(std::dynamic_pointer_cast<TestDerived>(back), nullptr);
    EXPECT_EQ(back->value, d.value);
}

TEST(FLKSerializable, UnreadableFilesRaiseWithTheAbsoluteURL) {
    auto unknown = scratch("unknown.json");
    std::ofstream(unknown) << R"({"className":"NoSuchClass"})";
    auto notJSON = scratch("garbage.json");
    std::ofstream(notJSON) << "{not json";
    for (const auto& url : {unknown, notJSON, scratch("missing.json")}) {
        try {
            flk::serializableFromJSONAtURL(url);
            FAIL() << "no exception for " << url;
        } catch (const std::invalid_argument& e) {
            EXPECT_EQ(std::string(e.what()), "Error reading file file://" + url.string());
        }
    }
}

TEST(FLKSerializable, WriteFailureIsReportedAndLeavesNoTemporary) {
    auto blocker = scratch("blocker");
    std::ofstream(blocker) << "a file where a folder should be";
    FLKError error;
    TestBase b;
    EXPECT_FALSE(flk::writeToJSONAtURL(b, blocker / "x.json", &error));
    EXPECT_FALSE(error.localizedDescription.empty());
    auto dir = scratch("readonly");
    std::filesystem::create_directories(dir);
    int files = 0;
    for (auto& e : std::filesystem::directory_iterator(blocker.parent_path())) files += e.path().extension() == ".tmp";
    EXPECT_EQ(files, 0);
}

TEST(FLKSerializable, ArraysKeepOrderAndSkipUnknownClasses) {
    std::vector<std::shared_ptr<TestBase>> objects{std::make_shared<TestBase>(), std::make_shared<TestDerived>()};
    objects[0]->value = 1;
    objects[1]->value = 2;
    FLKJSON array = flk::serializedArray(objects);
    array.push_back({{"className", "Nope"}});
    auto back = flk::arrayWithSerializedArray<TestBase>(array);
    ASSERT_EQ(back.size(), 2u);
    EXPECT_EQ(back[1]->className(), "TestDerived");
    EXPECT_EQ(back[1]->value, 2);
    EXPECT_TRUE(flk::serializedArray(std::vector<std::shared_ptr<TestBase>>{}).empty());
}

TEST(FLKFileSerializationContext, MediaPathsResolveAgainstTheInnermostDocument) {
    EXPECT_EQ(flk::relativeMediaPath("/x/Package/media/a.png"), "media/a.png");
    EXPECT_EQ(FLKFileSerializationContext::currentContext(), nullptr);
    {
        FLKFileSerializationContextScope outer(std::make_shared<Folder>("/docs/A"));
        {
            FLKFileSerializationContextScope inner(std::make_shared<Folder>("/docs/F"));
            EXPECT_EQ(flk::URLWithRelativeMediaPath("media/a.png"), std::filesystem::path("/docs/F/media/a.png"));
        }
        EXPECT_EQ(flk::URLWithRelativeMediaPath("media/a.png"), std::filesystem::path("/docs/A/media/a.png"));
    }
    EXPECT_TRUE(FLKFileSerializationContext::contextStack().empty());
}
