#include <gtest/gtest.h>

#include "fake/fake_platform.h"
#include "ownui/own_ui_case.h"
#include "support/process.h"

namespace brisko {
namespace {

// What a case line gives: the answer, or the failure message prefixed with "!".
std::string outcome(const std::string& line) {
    const CaseOutcome result = evaluateOwnUiCase(line);
    if (const auto* failure = std::get_if<CaseFailure>(&result)) return "!" + failure->message;
    return std::get<CaseAnswer>(result).line;
}

// A hit case on one host window (pid 5) covering 0..100 x 0..100, with extra fields for it.
std::string hostWindowHit(const std::string& windowFields, const std::string& caseFields = "\"x\":10,\"y\":10") {
    return "{\"kind\":\"hit\"," + caseFields + ",\"briskoPids\":[5],\"windows\":[{\"pid\":5,\"w\":100,\"h\":100" +
           windowFields + "}]}";
}

TEST(OwnUiCheck, EachCaseGivesItsAnswerOrNamesTheLineThatFails) {
    fake::FakePlatform platform;
    const std::vector<std::pair<std::string, std::string>> cases = {
        {R"({"kind":"owner","bundle":"com.brisko.desktop"})", "brisko=1"},
        // Fields of another type take their defaults: no text, 0, or an empty list.
        {R"({"kind":"exclude","apps":[{"pid":7,"exec":"brisko-mac-menubar"},{"pid":3,"bundle":"com.brisko.desktop"},)"
         R"({"pid":7,"exec":"brisko-mac-menubar"}]})",
         "exclude=7,3,7"},
        {R"({"kind":"exclude","apps":[{"bundle":"com.brisko.desktop"},{"pid":true,"exec":"brisko-mac-menubar"}]})",
         "exclude=0,1"},
        {R"({"kind":"exclude","apps":[{"pid":8,"bundle":"com.brisko.desktop"},3]})", "exclude=-"},
        {R"({"kind":"exclude","apps":{"pid":8,"bundle":"com.brisko.desktop"}})", "exclude=-"},
        {hostWindowHit(",\"id\":3"), "refuse=3"},
        {hostWindowHit(",\"id\":3,\"alpha\":0"), "refuse=-"},
        {hostWindowHit(",\"id\":3,\"alpha\":null"), "refuse=3"},
        {hostWindowHit(",\"id\":3,\"x\":20,\"w\":-20"), "refuse=3"},
        {hostWindowHit(",\"id\":4294967295"), "refuse=4294967295"},
        {R"({"kind":"hit","x":1,"y":1,"briskoPids":[5,"9"],"windows":[{"pid":5,"w":9,"h":9}]})", "refuse=-"},
        {R"({"kind":"hit","x":1,"y":1,"briskoPids":[-2147483648],"windows":[{"id":6,"pid":-2147483648.5,"w":9,"h":9}]})",
         "refuse=6"},
        {R"({"kind":"front","briskoPids":[],"windows":[{"id":1,"pid":5,"w":10,"h":10}]})", "front=other"},
        {R"({"kind":"front","briskoPids":[5],"windows":[{"id":1,"pid":5,"w":10,"h":10,"layer":3}]})", "front=other"},
        // Bad lines are named in the message.
        {R"({"kind":"owner"} {})", R"(!own-ui-check: not a JSON object: {"kind":"owner"} {})"},
        {"{}", "!own-ui-check: unknown kind in {}"},
        // Range is judged after shape and kind, and only for the fields the kind reads.
        {"[1e400]", "!own-ui-check: not a JSON object: [1e400]"},
        {R"({"kind":"hit","x":1e400)", R"(!own-ui-check: not a JSON object: {"kind":"hit","x":1e400)"},
        {R"({"kind":"Hit","x":1e400})", R"(!own-ui-check: unknown kind in {"kind":"Hit","x":1e400})"},
        {R"({"kind":"owner","windows":[{"id":-1}],"apps":[{"pid":1e12}]})", "brisko=0"},
        {R"({"kind":"hit","x":1e300,"y":-1e300,"windows":[{"pid":5,"w":1e308,"h":1}]})", "refuse=-"},
        {R"({"kind":"hit","x":"1e400","y":0})", "refuse=-"},  // no windows at all
        {R"({"kind":"owner","ignored":[1e999,{"x":[2e999]}],"x":-1e999,"exec":"brisko-mac-menubar"})", "brisko=1"},
    };
    for (const auto& [line, answer] : cases) EXPECT_EQ(outcome(line), answer) << line;
    // Numbers outside their type fail instead of wrapping.
    const std::vector<std::string> lines = {
        hostWindowHit(",\"id\":4294967296"),
        hostWindowHit(",\"pid\":2147483648"),
        hostWindowHit(",\"layer\":9223372036854775807"),
        R"({"kind":"hit","briskoPids":[2147483648],"windows":[]})",
        R"({"kind":"front","briskoPids":[5],"windows":[{"id":-2}]})",
        R"({"kind":"exclude","apps":[{"pid":1e10,"bundle":"org.x"}]})",
        R"({"kind":"hit","x":1e400,"y":0})",
        R"({"kind":"hit","windows":[{"w":1)" + std::string(400, '0') + "}]}",
        R"({"kind":"front","windows":[{"w":1,"h":1},{"pid":[1],"layer":-1e999}]})",
    };
    for (const std::string& line : lines) EXPECT_EQ(outcome(line), "!own-ui-check: number out of range in " + line);
}

TEST(OwnUiCheck, RunAnswersOnBufferedOutputUntilTheFirstBadCase) {
    const std::vector<std::tuple<std::string, int, std::string, std::string>> cases = {
        {"{\"kind\":\"owner\",\"exec\":\"brisko-mac-menubar\"}\n\n{\"kind\":\"exclude\",\"apps\":[]}\r\n\r\n"
         "{\"kind\":\"front\",\"briskoPids\":[5],\"windows\":[{\"pid\":5,\"w\":1,\"h\":1}]}\n{\"kind\":\"owner\"}",
         0, "brisko=1\nexclude=-\nfront=brisko\nbrisko=0\n", ""},
        {"{\"kind\":\"owner\"}\n  \n{\"kind\":\"owner\"}\n", 2, "brisko=0\n",
         "brisko-mac-input: own-ui-check: not a JSON object:   \n"},
        {"{\"kind\":\"owner\"}\r\n{\"kind\":\"Owner\"}\r\n{\"kind\":\"owner\"}\n", 2, "brisko=0\n",
         "brisko-mac-input: own-ui-check: unknown kind in {\"kind\":\"Owner\"}\n"},
        // Only a carriage return before a line feed belongs to the line ending.
        {"{\"kind\":\"owner\"}\n\r", 2, "brisko=0\n", "brisko-mac-input: own-ui-check: not a JSON object: \r\n"},
    };
    for (const auto& [input, status, answers, message] : cases) {
        fake::FakePlatform platform;
        EXPECT_EQ(platform.run({"own-ui-check"}, input), status) << input;
        EXPECT_EQ(platform.streams.buffered.str(), answers) << input;
        EXPECT_EQ(platform.streams.err(), message) << input;
        EXPECT_EQ(platform.windows.windowListQueries + platform.windows.identityQueries, 0);
    }
}

TEST(OwnUiCheckProgram, ManyAnswersReachAPipeWholeBeforeTheFirstBadCaseEndsTheRun) {
    std::string input, answers;
    for (int i = 0; i < 20000; ++i) {
        input += R"({"kind":"exclude","apps":[{"pid":)" + std::to_string(i) + R"(,"bundle":"com.brisko.desktop"}]})" "\r\n";
        answers += "exclude=" + std::to_string(i) + "\n";
    }
    const auto r = testing::runBrisko({"own-ui-check"}, input + "{\"kind\":null}\n" + input);
    EXPECT_EQ(r.status, 2);
    EXPECT_TRUE(r.out == answers) << r.out.size() << " bytes of answers, not " << answers.size();
    EXPECT_EQ(r.err, "brisko-mac-input: own-ui-check: unknown kind in {\"kind\":null}\n");
}

}  // namespace
}  // namespace brisko
