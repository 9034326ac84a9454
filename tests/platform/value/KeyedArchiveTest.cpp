// What archived objects come back as, and which archives are refused.
#include "platform/value/KeyedArchive.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace platform {
namespace {

using testing::HasSubstr;

/// A named node with children, such as a search has; its links can be changed to make what is refused.
class Node : public Object, public Archivable {
public:
    explicit Node(std::string text) : name(std::move(text)) { }

    std::string archiveClassName() const override { return "Node"; }
    void encodeWithCoder(KeyedArchiver& coder) const override
    {
        if (name == "stuck")
            return coder.fail({"Node", 7, "stuck"});
        coder.encodeString("name", name);
        coder.encodeInteger("weight", weight);
        coder.encodeValue("children", Value::array(children));
        coder.encodeObject("friend", Ref<const Object>(companion.get()));
    }
    static Ref<const Object> decoded(KeyedUnarchiver& coder)
    {
        // In another order than they were written.
        auto node = makeRef<Node>("");
        node->companion = coder.decodeObject<Node>("friend");
        node->children = coder.decodeValue("children").asArray();
        node->weight = coder.decodeInteger("weight");
        node->name = coder.decodeString("name");
        if (node->weight > 99)
            throw std::runtime_error("too new");
        return node;
    }

    std::string name;
    std::int64_t weight = 0;
    std::vector<Value> children;
    Ref<Node> companion;
};

const ArchiveClasses& classes()
{
    static const ArchiveClasses known{{"Node", &Node::decoded}};
    return known;
}

Value reference(int object) { return Value::dictionary({{"@object", object}}); }

/// The bytes of a hand-made archive.
std::string forged(Value root, std::vector<Value> objects, Value version = 1)
{
    return *encodePropertyList(
        Value::dictionary({{"archive", version}, {"root", Value::dictionary({{"root", root}})},
            {"objects", Value::array(std::move(objects))}}),
        PropertyListFormat::binary);
}

Value nodeHolding(std::vector<Value> children)
{
    return Value::dictionary({{"@class", "Node"}, {"children", Value::array(std::move(children))}});
}

TEST(KeyedArchive, BringsFieldsBackByTheirKeysInBothForms)
{
    for (const auto format : {PropertyListFormat::binary, PropertyListFormat::xml}) {
        KeyedArchiver archiver;
        archiver.encodeDouble("x", 0.1);
        archiver.encodeInteger("n", INT64_MIN);
        archiver.encodeBool("yes", true);
        archiver.encodeString("@class", "marked keys are the archive's own");
        archiver.encodeValue(
            "value", Value::dictionary({{"@object", Value::array({NullMarker{}, Date{5}})}}));
        archiver.encodeValue("none", Value());
        const auto bytes = archiver.finish(format);
        ASSERT_TRUE(bytes) << bytes.error().text;

        KeyedUnarchiver coder(*bytes, classes());
        EXPECT_EQ(coder.decodeDouble("x"), 0.1);
        EXPECT_EQ(coder.decodeInteger("n"), INT64_MIN);
        EXPECT_EQ(coder.decodeDouble("n"), -9223372036854775808.0);
        EXPECT_TRUE(coder.decodeBool("yes"));
        EXPECT_EQ(coder.decodeString("@class"), "marked keys are the archive's own");
        EXPECT_EQ(coder.decodeValue("value"),
            Value::dictionary({{"@object", Value::array({NullMarker{}, Date{5}})}}));
        EXPECT_FALSE(coder.contains("none"));
        EXPECT_EQ(coder.decodeInteger("none"), 0);
        EXPECT_EQ(coder.failure(), std::nullopt);
    }
}

TEST(KeyedArchive, BringsASharedObjectBackAsOne)
{
    const auto shared = makeRef<Node>("shared"), parent = makeRef<Node>("parent");
    parent->children = {shared, "text", Value::array({Value::dictionary({{"in", shared}})})};
    parent->companion = shared;
    const auto bytes = archivedValue(parent);
    ASSERT_TRUE(bytes) << bytes.error().text;
    const auto value = unarchivedValue(*bytes, classes());
    ASSERT_TRUE(value) << value.error().text;
    const auto* node = value->as<Node>();
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->companion->name, "shared");
    EXPECT_EQ(node->children[0].as<Node>(), node->companion.get());
    EXPECT_EQ(node->children[1], Value("text"));
    EXPECT_EQ(node->children[2].asArray()[0]["in"].as<Node>(), node->companion.get());
}

TEST(KeyedArchive, HasTheSameBytesForTheSameObjects)
{
    const auto made = [] {
        const auto a = makeRef<Node>("a"), b = makeRef<Node>("b");
        b->children = {a, a};
        return archivedValue(Value::array({b, a})).operator*();
    };
    EXPECT_EQ(made(), made());
}

// The stored form outlives the program: it changes only with the version.
TEST(KeyedArchive, NamesTheClassInTheDictionaryOfEachObject)
{
    const auto node = makeRef<Node>("a");
    const auto list = decodePropertyList(*archivedValue(Value::array({node, node, NullMarker{}})));
    EXPECT_EQ(*list,
        Value::dictionary({{"archive", 1},
            {"root",
                Value::dictionary({{"root",
                    Value::array({reference(0), reference(0), Value::dictionary({{"@null", true}})})}})},
            {"objects",
                Value::array({Value::dictionary(
                    {{"@class", "Node"}, {"name", "a"}, {"weight", 0}, {"children", Value::array({})}})})}}));
}

TEST(KeyedArchive, IsNotMadeOfWhatCannotComeBack)
{
    class Thing : public Object { };
    const auto ring = makeRef<Node>("a"), other = makeRef<Node>("b");
    ring->children = {other};
    other->companion = ring;
    auto deep = makeRef<Node>("end");
    for (int at = 0; at < 600; ++at) {
        auto outer = makeRef<Node>("outer");
        outer->companion = deep;
        deep = outer;
    }
    auto wide = makeRef<Node>("end");
    for (int at = 0; at < 31; ++at) {
        auto outer = makeRef<Node>("outer");
        outer->children = {wide, wide};
        wide = outer;
    }
    const struct {
        Value value;
        long code;
        const char* domain;
        const char* reason;
    } cases[] = {
        {ring, static_cast<long>(KeyedArchiveFault::cycle), "KeyedArchive", "Node holds itself"},
        {deep, static_cast<long>(KeyedArchiveFault::tooLarge), "KeyedArchive", "levels deep"},
        {wide, static_cast<long>(KeyedArchiveFault::tooLarge), "KeyedArchive", "values"},
        {makeRef<Thing>(), static_cast<long>(KeyedArchiveFault::notArchivable), "KeyedArchive", "Thing"},
        {Value::array({Value()}), static_cast<long>(KeyedArchiveFault::notArchivable), "KeyedArchive",
            "absent"},
        {Value::array({makeRef<Node>("stuck")}), 7, "Node", "stuck"},
        {"\xE9", static_cast<long>(PropertyListFault::notEncodable), "PropertyList", "root.root: the text"},
    };
    for (const auto& [value, code, domain, reason] : cases) {
        const auto bytes = archivedValue(value);
        ASSERT_FALSE(bytes) << reason;
        EXPECT_THAT(bytes.error().text, HasSubstr(reason));
        EXPECT_EQ(bytes.error().code, code) << reason;
        EXPECT_EQ(bytes.error().domain, domain) << reason;
    }
    ring->children.clear();
}

TEST(KeyedArchive, IsRefusedWithAReason)
{
    using enum KeyedArchiveFault;
    std::vector<Value> deep, wide;
    for (int at = 1; at <= 100'000; ++at)
        deep.push_back(nodeHolding({reference(at)}));
    for (int at = 1; at <= 31; ++at)
        wide.push_back(nodeHolding({reference(at), reference(at)}));
    wide.push_back(nodeHolding({}));
    const Value named = Value::dictionary({{"@class", "Node"}, {"name", 5}});
    const struct {
        const char* name;
        std::string bytes;
        KeyedArchiveFault fault;
        const char* reason;
    } cases[] = {
        {"a plain list", *encodePropertyList(Value::array({}), PropertyListFormat::xml), notArchive,
            "no archive"},
        {"a newer archive", forged(1, {}, 2), newerArchive, "archive version 2"},
        {"a much newer one", forged(1, {}, UINT64_MAX), newerArchive, "archive version 18446744073709551615"},
        {"an unknown class", forged(reference(0), {Value::dictionary({{"@class", "Tree"}})}), unknownClass,
            "Tree"},
        {"no class", forged(reference(0), {Value::dictionary({})}), unknownClass, "\"\""},
        {"no dictionary", forged(reference(0), {5}), unknownClass, "\"\""},
        {"an object past the end", forged(reference(1), {named}), notArchive, "none of the 1 objects"},
        {"a negative object", forged(reference(-1), {named}), notArchive, "none of the 1 objects"},
        {"a text as reference", forged(Value::dictionary({{"@object", "0"}}), {named}), notArchive,
            "none of"},
        {"an unknown mark", forged(Value::dictionary({{"@later", 1}}), {}), notArchive, "@later"},
        {"a field of another type", forged(reference(0), {named}), wrongType, "Node, \"name\": not text"},
        {"a field of another class",
            forged(reference(0), {Value::dictionary({{"@class", "Node"}, {"friend", "text"}})}), wrongType,
            "Node, \"friend\": not an object"},
        {"an object in itself", forged(reference(0), {nodeHolding({reference(0)})}), cycle,
            "object 0 holds itself"},
        {"a hundred thousand in one another", forged(reference(0), deep), tooLarge, "levels deep"},
        {"31, each twice in the one before", forged(reference(0), wide), tooLarge, "values"},
    };
    for (const auto& [name, bytes, fault, reason] : cases) {
        const auto value = unarchivedValue(bytes, classes());
        ASSERT_FALSE(value) << name;
        EXPECT_EQ(value.error().code, static_cast<long>(fault)) << name << ": " << value.error().text;
        EXPECT_EQ(value.error().domain, "KeyedArchive") << name;
        EXPECT_THAT(value.error().text, HasSubstr(reason)) << name;
    }
    EXPECT_EQ(unarchivedValue("junk", classes()).error().domain, "PropertyList");
}

TEST(KeyedArchive, KeepsTheFirstFailureAndAnswersNothingBehindIt)
{
    KeyedUnarchiver coder(
        *encodePropertyList(Value::dictionary({{"archive", 1}, {"objects", Value::array({})},
                                {"root", Value::dictionary({{"n", "text"}, {"m", 5}, {"w", UINT64_MAX}})}}),
            PropertyListFormat::binary),
        classes());
    EXPECT_EQ(coder.decodeInteger("m"), 5);
    EXPECT_EQ(coder.decodeInteger("n"), 0);
    ASSERT_TRUE(coder.failure());
    EXPECT_THAT(coder.failure()->text, HasSubstr("\"n\": not an integer"));
    EXPECT_EQ(coder.decodeInteger("m"), 0);
    coder.decodeInteger("w");
    EXPECT_THAT(coder.failure()->text, HasSubstr("\"n\""));
}

// A class may refuse what a newer version wrote by throwing; its caller decides what that means.
TEST(KeyedArchive, LetsTheExceptionOfAFactoryPass)
{
    const auto bytes = forged(reference(0), {Value::dictionary({{"@class", "Node"}, {"weight", 100}})});
    EXPECT_THROW((void)unarchivedValue(bytes, classes()), std::runtime_error);
}

} // namespace
} // namespace platform
