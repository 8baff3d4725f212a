#include <gtest/gtest.h>

#include "support/process.h"

namespace brisko {
namespace {

using testing::programPath;
using testing::runProgram;

struct Case {
    std::string line;
    std::string answer;
};

// One case of each kind and answer form; the rules themselves are covered by the unit tests.
const std::vector<Case> answeredCases = {
    {R"({"kind":"owner","bundle":"com.brisko.desktop"})", "brisko=1"},
    {R"({"kind":"owner","bundle":5,"exec":"Brisko-Mac-Menubar"})", "brisko=0"},
    {R"({"kind":"exclude","apps":[]})", "exclude=-"},
    {R"({"kind":"exclude","apps":[{"pid":7,"exec":"brisko-mac-menubar"},{"pid":-3,"bundle":"com.brisko.desktop"},)"
     R"({"pid":7,"bundle":"com.brisko.desktop"},{"pid":8,"bundle":"org.example"}]})",
     "exclude=7,-3,7"},
    {R"({"kind":"hit","x":10,"y":10,"briskoPids":[5],"windows":[{"id":2,"pid":9,"w":100,"h":100,"layer":20},)"
     R"({"id":4294967295,"pid":5,"w":100,"h":100}]})",
     "refuse=4294967295"},
    {R"({"kind":"hit","x":100,"y":10,"briskoPids":[5],"windows":[{"id":1,"pid":5,"w":100,"h":100}]})", "refuse=-"},
    {R"({"kind":"front","briskoPids":[5],"windows":[{"id":1,"pid":5,"w":10,"h":10}]})", "front=brisko"},
    {R"({"kind":"front","briskoPids":[5],"windows":[{"id":1,"pid":5,"w":10,"h":10,"layer":101},{"id":3,"pid":5,"w":10,"h":10}]})",
     "front=menu"},
    {R"({"kind":"front","briskoPids":[5],"windows":[{"id":1,"pid":5,"w":10,"h":10,"alpha":0},{"id":2,"pid":9,"w":10,"h":10}]})",
     "front=other"},
};

TEST(OwnUiCheckProgram, AnswersEveryCaseInOrder) {
    std::string input;
    std::string answers;
    for (std::size_t i = 0; i < answeredCases.size(); ++i) {
        input += answeredCases[i].line;
        // Line endings as different writers make them; blank lines in between; the last line unterminated.
        if (i + 1 < answeredCases.size()) input += i % 3 == 0 ? "\r\n" : i % 3 == 1 ? "\n\n" : "\n\r\n";
        answers += answeredCases[i].answer + "\n";
    }
    const auto r = runProgram(programPath(), {"own-ui-check"}, input);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, answers);
    EXPECT_EQ(r.err, "");
}

TEST(OwnUiCheckProgram, ManyAnswersReachAPipeWhole) {
    std::string input;
    std::string answers;
    for (int i = 0; i < 20000; ++i) {
        input += R"({"kind":"exclude","apps":[{"pid":)" + std::to_string(i) + R"(,"bundle":"com.brisko.desktop"}]})" "\n";
        answers += "exclude=" + std::to_string(i) + "\n";
    }
    const auto r = runProgram(programPath(), {"own-ui-check"}, input);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, answers);
}

struct FailedRun {
    std::string input;
    std::string out;
    std::string err;
};

TEST(OwnUiCheckProgram, FirstBadCaseEndsTheRunWithStatus2) {
    const std::string good = R"({"kind":"owner","exec":"brisko-mac-menubar"})";
    const std::vector<FailedRun> runs = {
        {good + "\n   \n" + good + "\n", "brisko=1\n", "brisko-mac-input: own-ui-check: not a JSON object:    \n"},
        {good + "\n[1,2]\n", "brisko=1\n", "brisko-mac-input: own-ui-check: not a JSON object: [1,2]\n"},
        {"{\"kind\":\"owner\"\n", "", "brisko-mac-input: own-ui-check: not a JSON object: {\"kind\":\"owner\"\n"},
        {good + "\r\n{}\r\n" + good, "brisko=1\n", "brisko-mac-input: own-ui-check: unknown kind in {}\n"},
        {good + "\n{\"kind\":\"Owner\"}", "brisko=1\n",
         "brisko-mac-input: own-ui-check: unknown kind in {\"kind\":\"Owner\"}\n"},
        {"{\"kind\":null}\n" + good, "", "brisko-mac-input: own-ui-check: unknown kind in {\"kind\":null}\n"},
    };
    for (const FailedRun& run : runs) {
        const auto r = runProgram(programPath(), {"own-ui-check"}, run.input);
        EXPECT_EQ(r.status, 2) << run.input;
        EXPECT_EQ(r.out, run.out) << run.input;
        EXPECT_EQ(r.err, run.err) << run.input;
    }
}

TEST(OwnUiCheckProgram, NumbersOutOfRangeEndTheRun) {
    const std::string good = R"({"kind":"front","briskoPids":[5],"windows":[{"pid":5,"w":1,"h":1}]})";
    const std::vector<std::string> badLines = {
        R"({"kind":"hit","x":1,"y":1,"briskoPids":[5],"windows":[{"id":-1,"pid":5,"w":9,"h":9}]})",
        R"({"kind":"front","briskoPids":[5],"windows":[{"pid":5,"w":9,"h":9,"layer":9.3e18}]})",
        R"({"kind":"exclude","apps":[{"pid":-3e9,"exec":"brisko-mac-menubar"}]})",
        R"({"kind":"hit","x":1e999,"y":1,"windows":[]})",
    };
    for (const std::string& bad : badLines) {
        const auto r = runProgram(programPath(), {"own-ui-check"}, good + "\n" + bad + "\n" + good + "\n");
        EXPECT_EQ(r.status, 2) << bad;
        EXPECT_EQ(r.out, "front=brisko\n") << bad;
        EXPECT_EQ(r.err, "brisko-mac-input: own-ui-check: number out of range in " + bad + "\n");
    }
}

TEST(OwnUiCheckProgram, ExtraArgumentReadsNothing) {
    const auto r = runProgram(programPath(), {"own-ui-check", "cases.jsonl"}, R"({"kind":"owner"})" "\n");
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, "brisko-mac-input: usage: own-ui-check (cases as JSON lines on stdin)\n");
}

}  // namespace
}  // namespace brisko
