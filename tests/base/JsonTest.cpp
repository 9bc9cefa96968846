#include "base/Json.h"
#include "base/Iso8601.h"

#include <gtest/gtest.h>

#include <limits>

using namespace vocalith;

namespace {

enum class Colour { red, default_ };
enum class Phase { waiting, running };
constexpr bool jsonKeyed(JsonType<Phase>)
{
    return true;
}

struct Nothing {
    bool operator==(const Nothing&) const = default;
};
struct Progress {
    double done = 0;
    bool operator==(const Progress&) const = default;
};
constexpr auto jsonFields(JsonType<Progress>)
{
    return fields(field("done", &Progress::done));
}

using Step = std::variant<Nothing, Progress, std::vector<int>>;
constexpr auto jsonUnion(JsonType<Step>)
{
    return taggedUnion(labelled("idle"), labelled("working"), unlabelled("counted"));
}

using Payload = std::variant<std::string, Progress>;
constexpr auto jsonUnion(JsonType<Payload>)
{
    return typedUnion("kind", "body", "words", "progress");
}

struct Record {
    std::optional<std::string> note;
    Colour colour = Colour::red;
    std::map<std::string, Step> steps;
    std::uint8_t small = 0;
    bool operator==(const Record&) const = default;
};
constexpr auto jsonFields(JsonType<Record>)
{
    return fields(field("note", &Record::note), field("colour", &Record::colour), field("steps", &Record::steps),
                  field("small", &Record::small));
}

Json json(std::string_view text)
{
    const auto parsed = parseJson(text);
    EXPECT_TRUE(parsed) << text;
    return parsed.value_or(Json());
}

TEST(Json, WritesInTheOrderOfTheListAndReadsItBack)
{
    const Record record{.note = std::nullopt,
                        .colour = Colour::default_,
                        .steps = {{"a", Nothing{}}, {"b", Progress{0.5}}, {"c", std::vector{1, 2}}},
                        .small = 255};
    const std::string text = R"({"colour":"default","steps":{"a":{"idle":{}},"b":{"working":{"done":0.5}},)"
                             R"("c":{"counted":{"_0":[1,2]}}},"small":255})";
    EXPECT_EQ(dumpJson(toJson(record)), text);
    EXPECT_EQ(fromJson<Record>(json(text)), record);
    EXPECT_EQ(dumpJson(toJson(Phase::running)), R"({"running":{}})");
    EXPECT_EQ(fromJson<Phase>(json(R"({"running":{}})")), Phase::running);
    EXPECT_EQ(dumpJson(toJson(Payload{Progress{1}})), R"({"kind":"progress","body":{"done":1.0}})");
    EXPECT_EQ(fromJson<Payload>(json(R"({"body":{"done":1},"kind":"progress"})")), Payload{Progress{1}});
}

TEST(Json, PassesOverUnknownKeysAndTakesNullForAbsent)
{
    const auto record = fromJson<Record>(json(R"({"new":[{}],"small":1,"steps":{},"note":null,"colour":"red"})"));
    ASSERT_TRUE(record);
    EXPECT_EQ(*record, (Record{.note = std::nullopt, .colour = Colour::red, .steps = {}, .small = 1}));
}

TEST(Json, NamesThePathOfWhatIsWrong)
{
    const struct {
        std::string_view text;
        std::string_view error;
    } cases[] = {
        {R"([])", "expected an object"},
        {R"({"colour":"red","steps":{}})", "small: missing"},
        {R"({"colour":"blue","steps":{},"small":1})", "colour: unknown case \"blue\""},
        {R"({"colour":"default_","steps":{},"small":1})", "colour: unknown case \"default_\""},
        {R"({"note":5,"colour":"red","steps":{},"small":1})", "note: expected a string"},
        {R"({"colour":"red","steps":{},"small":256})", "small: expected a smaller integer"},
        {R"({"colour":"red","steps":{},"small":-1})", "small: expected an integer that is not negative"},
        {R"({"colour":"red","steps":{},"small":1.5})", "small: expected an integer that is not negative"},
        {R"({"colour":"red","steps":{"a":{}},"small":1})",
         "steps.a: expected an object with one key that names the case"},
        {R"({"colour":"red","steps":{"a":{"idle":{},"working":{}}},"small":1})",
         "steps.a: expected an object with one key that names the case"},
        {R"({"colour":"red","steps":{"a":{"lost":{}}},"small":1})", "steps.a.lost: unknown case \"lost\""},
        {R"({"colour":"red","steps":{"a":{"idle":1}},"small":1})", "steps.a.idle: expected an object"},
        {R"({"colour":"red","steps":{"a":{"counted":{}}},"small":1})", "steps.a.counted._0: missing"},
        {R"({"colour":"red","steps":{"a":{"counted":{"_0":[1,"2"]}}},"small":1})",
         "steps.a.counted._0[1]: expected an integer"},
        {R"({"colour":"red","steps":{"a":{"working":{"done":"1"}}},"small":1})",
         "steps.a.working.done: expected a number"},
    };
    for (const auto& [text, error] : cases) {
        const auto record = fromJson<Record>(json(text));
        ASSERT_FALSE(record) << text;
        EXPECT_EQ(toString(record.error()), error);
    }
    EXPECT_EQ(fromJson<Payload>(json(R"({"body":{"done":1}})")).error(), (JsonError{"kind", "missing"}));
    EXPECT_EQ(fromJson<Payload>(json(R"({"kind":"progress","body":{}})")).error(), (JsonError{"body.done", "missing"}));
    EXPECT_EQ(fromJson<Payload>(json(R"({"kind":"noise","body":{}})")).error().path, "kind");
    EXPECT_EQ(fromJson<std::vector<Phase>>(json(R"([{"running":{}},"running"])")).error().path, "[1]");
}

TEST(Json, WholeNumbersKeepEveryBitAndRefuseWhatDoesNotFit)
{
    constexpr auto kLargest = std::numeric_limits<std::uint64_t>::max();
    constexpr auto kSmallest = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(fromJson<std::uint64_t>(json(dumpJson(toJson(kLargest)))), kLargest);
    EXPECT_EQ(fromJson<std::int64_t>(json(dumpJson(toJson(kSmallest)))), kSmallest);
    EXPECT_FALSE(fromJson<std::int64_t>(json("18446744073709551615")));
    EXPECT_FALSE(fromJson<std::uint64_t>(json("18446744073709551616")));
    EXPECT_FALSE(fromJson<int>(json("2147483648")));
    EXPECT_FALSE(fromJson<int>(json("true")));
    EXPECT_EQ(fromJson<std::uint64_t>(toJson(7)), 7u) << "a number that the program itself put together";
}

TEST(Json, NumbersThatAreNotFiniteStayReadable)
{
    for (const double value : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()})
        EXPECT_EQ(fromJson<double>(json(dumpJson(toJson(value)))), 0.0);
}

TEST(Json, DamagedTextIsAnErrorAndNothingWorse)
{
    const std::string deep(1'000'000, '[');
    std::string deepObjects;
    for (int i = 0; i < 100'000; ++i)
        deepObjects += R"({"a":)";
    for (const std::string_view text : {"", "{", "nul", "[1,]", "{\"a\" 1}", "1 2", "\"\xFF\"", "1e999", "\"\\",
                                        "\"\\ud800\"", deep.c_str(), deepObjects.c_str()})
        EXPECT_FALSE(parseJson(text)) << text.substr(0, 20);
    EXPECT_TRUE(parseJson(std::string(256, '[') + std::string(256, ']')));
    EXPECT_FALSE(parseJson(std::string(257, '[') + std::string(257, ']')));
    EXPECT_TRUE(parseJson(R"(["[[\"[[", ")" + std::string(1000, '[') + "\"]")) << "brackets in a text are no depth";
}

TEST(Json, InvalidUtf8IsReplacedWhenWritten)
{
    const std::map<std::string, std::string> values{{"k\xFFy", "a\xC3(\xE2\x82"}};
    const auto text = dumpJson(toJson(values));
    EXPECT_EQ(text, "{\"k\uFFFDy\":\"a\uFFFD(\uFFFD\"}");
    EXPECT_TRUE(parseJson(text));
}

TEST(Json, SinglePrecisionIsWrittenWithTheDigitsThatWereMeant)
{
    EXPECT_EQ(dumpJson(toJson(0.2F)), "0.2");
    EXPECT_EQ(fromJson<float>(json("0.2")), 0.2F);
    EXPECT_EQ(toJson(std::numeric_limits<float>::infinity()), 0.0);
    EXPECT_FALSE(fromJson<float>(json("1e300")));
}

TEST(Json, IdentitiesAndBytes)
{
    const auto id = fromJson<Uuid>(json(R"("0f8fad5b-d9cb-469f-a165-70867728950e")"));
    ASSERT_TRUE(id);
    EXPECT_EQ(dumpJson(toJson(*id)), R"("0F8FAD5B-D9CB-469F-A165-70867728950E")");
    EXPECT_FALSE(fromJson<Uuid>(json(R"("0f8fad5bd9cb469fa16570867728950e")")));

    EXPECT_EQ(dumpJson(toJson(Data{0, 0xFF, 0x10, 0x80})), R"("AP8QgA==")");
    EXPECT_EQ(fromJson<Data>(json(R"("AP8QgA==")")), (Data{0, 0xFF, 0x10, 0x80}));
    EXPECT_FALSE(fromJson<Data>(json(R"("A*8=")")));
    EXPECT_FALSE(fromJson<Data>(json("[0,255]")));
}

TEST(Json, Dates)
{
    const struct {
        std::string_view stored;
        std::string_view read; ///< empty: refused
    } cases[] = {
        {R"("2026-03-01T12:00:00.123Z")", "2026-03-01T12:00:00.123Z"},
        {R"("2026-03-01T12:00:00Z")", "2026-03-01T12:00:00.000Z"},
        {R"("2026-03-01t12:00:00.1239999z")", "2026-03-01T12:00:00.123Z"},
        {R"("2026-03-01T00:30:00.5+01:00")", "2026-02-28T23:30:00.500Z"},
        {R"("2026-02-28T23:30:00-0930")", "2026-03-01T09:00:00.000Z"},
        {R"("1900-01-01T00:00:00.001Z")", "1900-01-01T00:00:00.001Z"},
        {"0", "2001-01-01T00:00:00.000Z"},
        {"794059200.25", "2026-03-01T12:00:00.250Z"},
        {"-978307200.001", "1969-12-31T23:59:59.999Z"},
        {R"("2026-02-29T12:00:00Z")", ""},
        {R"("2026-13-01T12:00:00Z")", ""},
        {R"("2026-03-01T24:00:00Z")", ""},
        {R"("2026-03-01T12:00:00")", ""},
        {R"("2026-03-01 12:00:00Z")", ""},
        {R"("2026-03-01T12:00:00Z ")", ""},
        {R"("")", ""},
        {"1e300", ""},
        {"-1e13", ""},
        {"null", ""},
    };
    for (const auto& [stored, read] : cases) {
        const auto date = fromJson<Date>(json(stored));
        EXPECT_EQ(date.map([](Date d) { return toIso8601(d); }).value_or(""), read) << stored;
    }
    for (const Date date : {Date::min(), Date::max()})
        EXPECT_TRUE(fromJson<Date>(toJson(date))) << "a date beyond the calendar made a record unreadable";
}

} // namespace
