#include <gtest/gtest.h>

#include "cli/process_state.h"
#include "fake/fake_platform.h"
#include "ownui/capture_exclusion.h"
#include "ownui/live_inventory.h"
#include "ownui/owner_identity.h"

namespace brisko {
namespace {

using Text = std::optional<std::string>;

class OwnerIdentityTest : public ::testing::Test {
protected:
    fake::FakePlatform platform;
};

TEST_F(OwnerIdentityTest, RecognisesTheHostOnlyByExactIdentifierOrExecutableName) {
    const std::vector<std::tuple<Text, Text, bool>> cases = {
        {"com.brisko.desktop", std::nullopt, true},
        {std::nullopt, "brisko-mac-menubar", true},
        {"org.example.editor", "brisko-mac-menubar", true},
        {"com.brisko.desktop", "anything", true},
        {"com.brisko.desktop.helper", "brisko-helper", false},
        {"Com.Brisko.Desktop", std::nullopt, false},
        {"com.brisko.desktop ", std::nullopt, false},
        {std::nullopt, "Brisko-Mac-Menubar", false},
        {std::nullopt, "brisko-mac-menubar-2", false},
        {std::nullopt, "brisko-mac", false},
        {"", "", false},
        {std::nullopt, std::nullopt, false},
    };
    for (const auto& [bundle, exec, host] : cases) {
        EXPECT_EQ(isBriskoOwner(bundle, exec), host) << bundle.value_or("(none)") << " / " << exec.value_or("(none)");
    }
}

TEST_F(OwnerIdentityTest, ExcludedPidsKeepInputOrderAndDuplicates) {
    const std::vector<OwnerIdentity> candidates = {
        {900, "com.brisko.desktop", std::nullopt}, {4, "org.other", "other"},
        {12, std::nullopt, "brisko-mac-menubar"},   {900, "com.brisko.desktop", std::nullopt},
        {7, std::nullopt, std::nullopt},
    };
    EXPECT_EQ(briskoExcludedPids(candidates), (std::vector<std::int32_t>{900, 12, 900}));
    EXPECT_TRUE(briskoExcludedPids({}).empty());
}

TEST_F(OwnerIdentityTest, ExecutableNameIsTheLastPathComponent) {
    platform.windows.paths = {
        {1, "/Applications/Brisko.app/Contents/MacOS/brisko-mac-menubar"},
        {2, "brisko-mac-menubar"},
        {3, "/opt/tools/"},
        {4, "/"},
        {5, "/usr/bin/with space"},
        {7, "/opt/a\xFF\xC3" "b"},
    };
    const std::vector<std::pair<std::int32_t, Text>> cases = {
        {1, "brisko-mac-menubar"}, {2, "brisko-mac-menubar"}, {3, "tools"},
        {4, "/"},                  {5, "with space"},         {6, std::nullopt},
        {7, "a\uFFFD\uFFFDb"},  // bytes that are no UTF-8 read as replacement characters
    };
    for (const auto& [pid, name] : cases) EXPECT_EQ(executableName(pid), name) << pid;
}

TEST_F(OwnerIdentityTest, PidAnswersAreKeptForTheLifeOfTheProcess) {
    platform.windows.bundles[902] = "com.brisko.desktop";
    platform.windows.paths[611] = "/Applications/Brisko.app/Contents/MacOS/brisko-mac-menubar";
    platform.windows.paths[77] = "/usr/bin/editor";

    EXPECT_TRUE(pidIsBrisko(902));
    EXPECT_TRUE(pidIsBrisko(611));
    EXPECT_FALSE(pidIsBrisko(77));
    const int asked = platform.windows.identityQueries;
    EXPECT_EQ(asked, 6);  // bundle and path, once per pid

    // The host now runs under 77 and 902 has gone: the first answers stand, nothing is asked.
    platform.windows.bundles.erase(902);
    platform.windows.bundles[77] = "com.brisko.desktop";
    for (int round = 0; round < 3; ++round) {
        EXPECT_TRUE(pidIsBrisko(902));
        EXPECT_TRUE(pidIsBrisko(611));
        EXPECT_FALSE(pidIsBrisko(77));
    }
    EXPECT_EQ(platform.windows.identityQueries, asked);
    const std::map<std::int32_t, bool> cached = {{77, false}, {611, true}, {902, true}};
    EXPECT_EQ(processState().briskoOwnerCache, cached);
}

TEST_F(OwnerIdentityTest, CandidatesComeFromTheContentAndBypassTheCache) {
    platform.windows.paths[12] = "/x/brisko-mac-menubar";
    platform.windows.bundles[12] = "com.brisko.desktop";  // the registry is not consulted here
    const platform::ShareableContent content{{}, {{900, "com.brisko.desktop"}, {12, ""}, {33, "org.other"}}};

    for (int round = 0; round < 2; ++round) {
        const std::vector<OwnerIdentity> candidates = briskoCandidates(content);
        ASSERT_EQ(candidates.size(), 3u);
        EXPECT_EQ(candidates[0].pid, 900);
        EXPECT_EQ(candidates[0].bundleIdentifier, "com.brisko.desktop");
        EXPECT_EQ(candidates[0].executableName, std::nullopt);
        EXPECT_EQ(candidates[1].pid, 12);
        EXPECT_EQ(candidates[1].bundleIdentifier, std::nullopt);
        EXPECT_EQ(candidates[1].executableName, "brisko-mac-menubar");
        EXPECT_EQ(candidates[2].bundleIdentifier, "org.other");
    }
    EXPECT_EQ(platform.windows.identityQueries, 6);
    EXPECT_TRUE(processState().briskoOwnerCache.empty());
}

TEST_F(OwnerIdentityTest, CaptureDisplayPrefersTheMainDisplay) {
    const platform::CaptureDisplay first{5, 1440, 900};
    const platform::CaptureDisplay second{9, 1920, 1080};
    const platform::ShareableContent two{{first, second}, {}};

    platform.capture.mainDisplay = 9;
    EXPECT_EQ(mainSCDisplay(two)->displayID, 9u);
    platform.capture.mainDisplay = 1;
    EXPECT_EQ(mainSCDisplay(two)->displayID, 5u);
    EXPECT_FALSE(mainSCDisplay(platform::ShareableContent{}).has_value());
}

TEST_F(OwnerIdentityTest, FilterExcludesTheHostApplicationsPidsAscending) {
    platform.windows.paths[12] = "/x/brisko-mac-menubar";
    const platform::CaptureDisplay display{5, 1440, 900};
    const platform::ShareableContent content{
        {display}, {{900, "com.brisko.desktop"}, {40, "org.other"}, {12, ""}, {3, ""}}};

    const platform::CaptureFilter filter = briskoExcludingFilter(display, content);
    EXPECT_EQ(filter.display.displayID, 5u);
    EXPECT_EQ(filter.excludedPids, (std::vector<std::int32_t>{12, 900}));

    const platform::ShareableContent none{{display}, {{40, "org.other"}}};
    EXPECT_TRUE(briskoExcludingFilter(display, none).excludedPids.empty());

    // Selection is by pid over every listed application, so a second entry of a host pid goes too.
    const platform::ShareableContent twice{{display}, {{900, "org.helper"}, {900, "com.brisko.desktop"}}};
    EXPECT_EQ(briskoExcludingFilter(display, twice).excludedPids, (std::vector<std::int32_t>{900, 900}));
    EXPECT_EQ(applicationsWithPids(content, {3, 900, 77}), (std::vector<std::size_t>{0, 3}));
}

}  // namespace
}  // namespace brisko
