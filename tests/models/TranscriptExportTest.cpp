#include "models/TranscriptExport.h"
#include "base/Json.h"
#include "models/TranscriptTime.h"

#include <gtest/gtest.h>

#include <QString>
#include <QXmlStreamReader>

#include <limits>
#include <map>

using namespace vocalith;
using namespace std::string_literals;

namespace {

using Segment = TranscriptionData::Segment;
using Rate = SupportedFinalCutFrameRate;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr Date kCreated = std::chrono::sys_days{std::chrono::year{2026} / 3 / 1} + std::chrono::hours{9};

Segment segment(std::string text, double start, double end, std::optional<std::string> speaker = {})
{
    return {Uuid{}, std::move(text), start, end, std::move(speaker)};
}

std::string exported(const ExportFormat& format, std::vector<Segment> segments)
{
    return exportTranscript({PredefinedModelID::small, std::move(segments)}, format, kCreated);
}

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> found;
    for (const auto& line : QString::fromStdString(text).split('\n'))
        found.push_back(line.toStdString());
    return found;
}

const std::vector<Segment> kHostile = {
    segment("a --> b\n\n2\n00:00:01,000 --> 00:00:02,000\nfake", 0, 1, "Ann --> <b>\n\"&'"),
    segment("<v Bob>&amp; ]]> \"quoted\" & 'so'", 5, 3),
    segment("nul\0 bell\x07 esc\x1B[31m del\x7F c1\u0085 \uFFFE\uFFFF"s, kNaN, kInfinity),
    segment("broken \xFF\xC3( \xED\xA0\x80 end", -kInfinity, -1),
    segment("\r\n \t \u2028 \r\n", 1, 2),
    segment("שלום עולם مرحبا 👨‍👩‍👧 \u2029\u2028 tail", 360000.5, 1e300),
    segment("---->", 2, 2),
};

TEST(TranscriptTime, CutsOffWhereTheTablesSay)
{
    const struct {
        double seconds;
        std::string_view srt;
        std::string_view view;
    } cases[] = {
        {3725.5, "01:02:05,500", "62:05.500"},    {0, "00:00:00,000", "00:00.000"},
        {0.9999, "00:00:00,999", "00:00.999"},    {59.9996, "00:00:59,999", "00:59.999"},
        {3599.75, "00:59:59,750", "59:59.750"},   {363661.25, "101:01:01,250", "6061:01.250"},
        {-5, "00:00:00,000", "00:00.000"},        {kNaN, "00:00:00,000", "00:00.000"},
        {kInfinity, "00:00:00,000", "00:00.000"},
    };
    for (const auto& [seconds, srt, view] : cases) {
        EXPECT_EQ(srtTime(transcriptTime(seconds)), srt);
        EXPECT_EQ(startText(segment("", seconds, 0)), view);
    }
    EXPECT_EQ(webVttTime(transcriptTime(3725.5)), "01:02:05.500");
    const std::pair<double, std::string_view> lengths[] = {{9.96, "10.0s"}, {10.2, "10s"}, {0.04, "0.0s"}, {10, "10s"},
                                                           {125.6, "126s"}, {-3, "0.0s"},  {kNaN, "0.0s"}};
    for (const auto& [length, shown] : lengths)
        EXPECT_EQ(lengthText(segment("", 100, 100 + length)), shown);
}

TEST(TranscriptExport, Subtitles)
{
    const std::vector<Segment> segments = {segment(" Hello <b> & you\r\nthere ", 0, 1.5),
                                           segment("Zero", 3725.5, 3725.5, "Ann & Bob"), segment("  ", 2, 3)};
    EXPECT_EQ(exported(SrtFormat{}, segments), "1\n00:00:00,000 --> 00:00:01,500\nHello <b> & you\nthere\n\n"
                                               "2\n01:02:05,500 --> 01:02:05,501\nAnn & Bob: Zero\n\n");
    EXPECT_EQ(exported(VttFormat{}, segments), "WEBVTT\n\n1\n00:00:00.000 --> 00:00:01.500\n"
                                               "Hello &lt;b&gt; &amp; you\nthere\n\n"
                                               "2\n01:02:05.500 --> 01:02:05.501\n<v Ann &amp; Bob>Zero\n\n");
    EXPECT_EQ(exported(SrtFormat{}, {}), "");
    EXPECT_EQ(exported(VttFormat{}, {}), "WEBVTT\n\n");
}

/// Reads subtitles as a player does: blocks between blank lines, each with a number and a time line.
void expectCues(const std::string& file, std::size_t count, const std::string& comma)
{
    std::size_t number = 0;
    const auto all = lines(file);
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (all[i].empty())
            continue;
        EXPECT_EQ(all[i], std::to_string(++number));
        ASSERT_LT(i + 2, all.size());
        const auto arrow = all[++i].find(" --> ");
        ASSERT_NE(arrow, std::string::npos) << all[i];
        EXPECT_EQ(all[i].substr(arrow - 4, 1), comma);
        while (++i < all.size() && !all[i].empty())
            EXPECT_EQ(all[i].find("-->"), std::string::npos) << all[i];
    }
    EXPECT_EQ(number, count);
}

TEST(TranscriptExport, APlayerReadsHostileTextAsTheSameCues)
{
    expectCues(exported(SrtFormat{}, kHostile), 6, ",");
    const auto vtt = exported(VttFormat{}, kHostile);
    expectCues(vtt.substr(std::string("WEBVTT\n\n").size()), 6, ".");
    EXPECT_NE(vtt.find("<v Ann --&gt; &lt;b&gt; \"&amp;'>a --&gt; b\n2\n"), std::string::npos) << vtt;
    EXPECT_NE(exported(SrtFormat{}, kHostile).find("---- >"), std::string::npos);
}

TEST(TranscriptExport, EveryFormatIsValidUtf8WithTheWordsAndWithoutControls)
{
    for (const auto* name : {"srt", "vtt", "md", "txt", "fcpxml", "json"}) {
        const auto file = exported(exportFormat(name).value(), kHostile);
        EXPECT_EQ(QString::fromUtf8(file.c_str(), static_cast<qsizetype>(file.size())).toStdString(), file) << name;
        for (const auto* words : {"שלום עולם مرحبا 👨‍👩‍👧", "broken \uFFFD", "fake"})
            EXPECT_NE(file.find(words), std::string::npos) << name << ": " << words;
        for (const char c : file)
            ASSERT_TRUE(static_cast<unsigned char>(c) >= ' ' || c == '\n' || c == '\t') << name << ": " << int(c);
    }
}

TEST(TranscriptExport, PlainTextIsTheJoinedSegmentsAndSaysWhoSpeaks)
{
    const std::vector<Segment> quiet = {segment(" One ", 0, 1), segment("", 1, 2), segment("two", 2, 3)};
    EXPECT_EQ(exported(PlainTextFormat{}, quiet), plainText({PredefinedModelID::small, quiet}));
    EXPECT_EQ(plainText({PredefinedModelID::small, quiet}), "One two");
    EXPECT_EQ(exported(PlainTextFormat{}, {segment("Hi", 0, 1, "A"), segment("there", 1, 2, "A"),
                                           segment("Yes", 2, 3, "B"), segment("(noise)", 3, 4)}),
              "A: Hi there\nB: Yes\n(noise)");
    EXPECT_EQ(exported(PlainTextFormat{}, {}), "");
}

TEST(TranscriptExport, MarkdownShowsTheTextAsItWasSaid)
{
    EXPECT_EQ(exported(MarkdownFormat{}, {segment("# *not* a\n\n- list <br> [x](y)", 3725.9, 1, "A_b")}),
              "# Transcript\n\nCreated: 2026-03-01 09:00:00 +0000\n\nModel: small\n"
              "\n**01:02:05** **A\\_b:** # \\*not\\* a - list \\<br\\> \\[x\\](y)\n");
}

TEST(TranscriptExport, JsonIsTheStoredForm)
{
    for (const auto& segments : {std::vector<Segment>{}, kHostile}) {
        const TranscriptionData transcript{TranscriptionModelID("mine\n[]"), segments};
        const auto text = exportTranscript(transcript, JsonFormat{}, kCreated);
        EXPECT_EQ(text, dumpJson(toJson(transcript), 2) + '\n');
        EXPECT_TRUE(parseJson(text).and_then(&fromJson<TranscriptionData>));
    }
}

struct Title {
    std::string text, offset, duration;
    int lane = 0;
};

struct FcpxmlDocument {
    std::vector<Title> titles;
    std::map<std::string, std::map<std::string, std::string>> attributes; ///< of the last element with that name
};

FcpxmlDocument readFcpxml(const std::string& xml)
{
    FcpxmlDocument document;
    QXmlStreamReader reader(QByteArray::fromStdString(xml));
    std::string open;
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        if (token == QXmlStreamReader::StartElement) {
            open = reader.name().toString().toStdString();
            auto& attributes = document.attributes[open];
            attributes.clear();
            for (const auto& attribute : reader.attributes())
                attributes[attribute.name().toString().toStdString()] = attribute.value().toString().toStdString();
            if (open == "title")
                document.titles.push_back(
                    {"", attributes["offset"], attributes["duration"], std::stoi(attributes["lane"])});
        } else if (token == QXmlStreamReader::EndElement) {
            open.clear();
        } else if (token == QXmlStreamReader::Characters && open == "text-style") {
            document.titles.back().text += reader.text().toString().toStdString();
        }
    }
    EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString();
    return document;
}

TEST(FcpxmlExport, TitlesStandOnWholeFramesOfEveryRate)
{
    const struct {
        Rate rate;
        std::string_view frame, offset, duration, gap;
    } cases[] = {
        {Rate::fps23, "1001/24000s", "24024/24000s", "36036/24000s", "60060/24000s"},
        {Rate::fps24, "1/24s", "24/24s", "36/24s", "60/24s"},
        {Rate::fps25, "1/25s", "25/25s", "38/25s", "63/25s"},
        {Rate::fps29, "1001/30000s", "30030/30000s", "45045/30000s", "75075/30000s"},
        {Rate::fps30, "1/30s", "30/30s", "45/30s", "75/30s"},
        {Rate::fps50, "1/50s", "50/50s", "75/50s", "125/50s"},
        {Rate::fps59, "1001/60000s", "60060/60000s", "90090/60000s", "150150/60000s"},
        {Rate::fps60, "1/60s", "60/60s", "90/60s", "150/60s"},
    };
    for (const auto& [rate, frame, offset, duration, gap] : cases) {
        auto document = readFcpxml(exported(FcpxmlFormat{rate}, {segment("Hello", 1, 2.5)}));
        ASSERT_EQ(document.titles.size(), 1u);
        EXPECT_EQ(document.attributes["format"]["frameDuration"], frame);
        EXPECT_EQ(document.titles[0].offset, offset);
        EXPECT_EQ(document.titles[0].duration, duration);
        EXPECT_EQ(document.attributes["gap"]["duration"], gap);
        EXPECT_EQ(document.attributes["sequence"]["duration"], gap);
    }
}

TEST(FcpxmlExport, DescribesTheProject)
{
    auto document = readFcpxml(exported(FcpxmlFormat{}, {segment("Hello", 1, 2)}));
    EXPECT_EQ(document.attributes["fcpxml"]["version"], "1.9");
    EXPECT_EQ(document.attributes["format"]["width"], "1920");
    EXPECT_EQ(document.attributes["format"]["height"], "1080");
    EXPECT_EQ(document.attributes["event"]["name"], "Vocalith Transcript");
    EXPECT_EQ(document.attributes["project"]["name"], "Vocalith Transcript");
    EXPECT_EQ(document.attributes["effect"]["name"], "Basic Title");
    EXPECT_EQ(document.attributes["title"]["ref"], document.attributes["effect"]["id"]);
    const std::map<std::string, std::string> style = {
        {"font", "Helvetica"}, {"fontSize", "60"}, {"fontColor", "1 1 1 1"}, {"alignment", "center"}};
    EXPECT_EQ(document.attributes["text-style"], style);
}

/// The number of frames that a time at 30 frames a second stands for.
int frames(const std::string& time)
{
    EXPECT_TRUE(time == "0s" || time.ends_with("/30s")) << time;
    return std::stoi(time);
}

TEST(FcpxmlExport, SurvivesHostileTextAndTimes)
{
    const auto xml = exported(FcpxmlFormat{}, kHostile);
    const auto document = readFcpxml(xml);
    ASSERT_EQ(document.titles.size(), 6u);
    EXPECT_EQ(document.titles[1].text, "<v Bob>&amp; ]]> \"quoted\" & 'so'");
    EXPECT_NE(xml.find("&lt;v Bob&gt;&amp;amp; ]]&gt; &quot;quoted&quot; &amp; &apos;so&apos;"), std::string::npos);
    for (const auto& title : document.titles)
        EXPECT_TRUE(!title.offset.starts_with('-') && title.duration != "0s" && !title.duration.starts_with('-'))
            << title.text << title.offset << ' ' << title.duration;
    const auto empty = readFcpxml(exported(FcpxmlFormat{}, {}));
    EXPECT_EQ(empty.attributes.at("gap").at("duration"), "1/30s");
}

TEST(FcpxmlExport, TitlesOfOneLaneNeverOverlap)
{
    const auto document = readFcpxml(
        exported(FcpxmlFormat{}, {segment("a", 0, 10), segment("b", 1, 2), segment("c", 1.5, 3), segment("d", 2, 4),
                                  segment("e", 10, 11), segment("back", 0.5, 1), segment("f", 20, 20)}));
    std::map<int, int> laneEnd;
    for (const auto& title : document.titles) {
        const int start = frames(title.offset);
        EXPECT_GE(start, laneEnd[title.lane]) << title.text;
        laneEnd[title.lane] = start + frames(title.duration);
    }
    EXPECT_LE(laneEnd.size(), 4u);
}

TEST(TranscriptExport, FormatsHaveNamesAndExtensions)
{
    const std::tuple<std::string_view, ExportFormat, std::string_view> cases[] = {
        {"srt", SrtFormat{}, "srt"},
        {"VTT", VttFormat{}, "vtt"},
        {"md", MarkdownFormat{}, "md"},
        {"Markdown", MarkdownFormat{}, "md"},
        {"json", JsonFormat{}, "json"},
        {"txt", PlainTextFormat{}, "txt"},
        {"text", PlainTextFormat{}, "txt"},
        {"fcpxml", FcpxmlFormat{}, "fcpxml"},
        {"fcpxml:23.976", FcpxmlFormat{Rate::fps23}, "fcpxml"},
        {"FCPXML:29.97", FcpxmlFormat{Rate::fps29}, "fcpxml"},
        {"fcpxml:60", FcpxmlFormat{Rate::fps60}, "fcpxml"},
    };
    for (const auto& [name, format, extension] : cases) {
        EXPECT_EQ(exportFormat(name), format) << name;
        EXPECT_EQ(fileExtension(format), extension);
    }
    for (const auto* name : {"", "fcpxml:", "fcpxml:31", "srt:25", "doc", " srt"})
        EXPECT_FALSE(exportFormat(name)) << name;
}

} // namespace
