// The logging convention: what reaches which output, and what a closed gate leaves undone.
#include <gmock/gmock.h>

#include <cwchar>
#include <stdexcept>

#include "platform/ULogger.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Scene.h"

#define LSC_LOG_TAG "Tag"
#include "aaa/aaa/lsc/ShadingLog.h"

namespace {

using NSCam::Utils::ULog::ULogger;
using testing::ElementsAre;
using testing::IsEmpty;

class Log : public test::HostTest {
protected:
    int evaluated() { return ++mEvaluations; }

    int mEvaluations = 0;
    test::LogCapture mLog;
};

TEST_F(Log, EveryModeAgainstEveryKind) {
    for (std::int32_t mode = 0; mode < 16; ++mode) {
        host::setLogSwitches(mode, test::kAllDetails, test::kAllModules);
        std::vector<std::string> expected;
        if (mode & 1) expected.push_back("android 6 Tag: [TestBody] e 1 (TestBody){#LINE:LogTest}");
        if (mode & 0xA) expected.push_back("ulog 1 Tag: [TestBody] e 1");
        if (mode & 1) expected.push_back("android 3 Tag: [TestBody] d");
        if (mode & 0xA) expected.push_back("ulog 5 Tag: [TestBody] d");
        if (mode & 0xA) expected.insert(expected.end(), {"ulog 1 Tag: [TestBody] a", "ulog_assert 1"});
        expected.push_back("android 7 Tag: [TestBody] a (TestBody){#LINE:LogTest}");
        LSC_LOG_ERROR("e %d", 1);
        LSC_LOG_DEBUG("d");
        LSC_LOG_ASSERT("a");
        EXPECT_EQ(mLog.take(), expected) << "mode " << mode;
    }
}

TEST_F(Log, DebugNeedsLevelAndMaskAndEvaluatesNothingWithout) {
    for (const std::uint32_t level : {0U, 4U, 5U, 6U, 0xFFFFFFFFU}) {
        for (const std::uint32_t mask : {0U, 0x800000U, 0x21000U, 0x801000U, 0x820000U, 0xFFFFFFFFU}) {
            host::setLogSwitches(1, level, mask);
            const bool open = level >= 5 && (mask & 0x800000U) != 0 && (mask & 0x21000U) != 0;
            mEvaluations = 0;
            LSC_LOG_DEBUG("%d", evaluated());
            EXPECT_EQ(mEvaluations, open ? 1 : 0) << level << ' ' << mask;
            EXPECT_EQ(mLog.take().size(), open ? 1U : 0U) << level << ' ' << mask;
        }
    }
}

TEST_F(Log, ArgumentsAreEvaluatedOnceForBothOutputsAndNotAtAllForNone) {
    host::setLogSwitches(3, test::kAllDetails, test::kAllModules);
    LSC_LOG_ERROR("%d", evaluated());
    LSC_LOG_DEBUG("%d", evaluated());
    LSC_LOG_ASSERT("%d", evaluated());
    EXPECT_EQ(mEvaluations, 3);
    host::setLogSwitches(4, test::kAllDetails, test::kAllModules);
    LSC_LOG_ERROR("%d", evaluated());
    LSC_LOG_DEBUG("%d", evaluated());
    LSC_LOG_DEBUG_IF(false, "%d", evaluated());
    EXPECT_EQ(mEvaluations, 3);
}

TEST_F(Log, CustomerGateComesFirst) {
    host::setLogSwitches(1, 0, 0);
    int tested = 0;
    LSC_LOG_DEBUG_IF(++tested > 0, "x");
    EXPECT_EQ(tested, 1);
    host::setLogSwitches(1, test::kAllDetails, test::kAllModules);
    LSC_LOG_DEBUG_IF(false, "x");
    EXPECT_THAT(mLog.take(), IsEmpty());
}

TEST_F(Log, IsOneStatementAmidHostileNames) {
    host::setLogSwitches(1, test::kAllDetails, test::kAllModules);
    const int lsc = 1, log = 2, site = 3, Site = 4, error = 5, format = 6, args = 7;
    if (lsc == 0)
        LSC_LOG_ERROR("not this");
    else
        LSC_LOG_DEBUG("%d%d%d%d%d%d%d", lsc, log, site, Site, error, format, args);
    EXPECT_THAT(mLog.take(), ElementsAre("android 3 Tag: [TestBody] 1234567"));
    [] { LSC_LOG_ERROR_AS("name", "in a lambda"); }();
    EXPECT_THAT(mLog.take(), ElementsAre("android 6 Tag: [name] in a lambda (name){#LINE:LogTest}"));
}

TEST_F(Log, UnifiedLoggerGetsAtMost1023Characters) {
    std::vector<host::LogEntry> entries;
    host::setLogSink([&](const host::LogEntry& entry) { entries.push_back(entry); });
    host::setLogSwitches(3, 0, 0);
    const std::string head = "[TestBody] ";
    for (const std::size_t length : {1022U, 1023U, 1024U, 5000U}) {
        const std::string text(length - head.size(), 'x');
        entries.clear();
        LSC_LOG_ERROR("%s", text.c_str());
        ASSERT_EQ(entries.size(), 2U);
        EXPECT_THAT(entries[0].text, testing::StartsWith(head + text + " (TestBody)"));
        EXPECT_EQ(entries[1].text, (head + text).substr(0, 1023));
        EXPECT_EQ(entries[1].length, static_cast<int>(std::min<std::size_t>(length, 1023)));
        EXPECT_EQ(entries[1].module, 0x821001U);
    }
}

TEST_F(Log, ATextThatCannotBeFormattedIsDropped) {
    host::setLogSwitches(3, 0, 0);
    constexpr wint_t kNoCharacter = 0x7FFFFFFF;
    LSC_LOG_ERROR("%lc", kNoCharacter);
    EXPECT_THAT(mLog.take(), IsEmpty());
}

TEST_F(Log, NothingThatAnOutputDoesReachesTheCaller) {
    host::setLogSwitches(2, 0, 0);
    host::setHook([](host::Operation) { throw std::runtime_error("logger"); });
    LSC_LOG_ERROR("thrown away");
    LSC_LOG_ASSERT("kept on the other output");
    host::setHook(nullptr);
    EXPECT_EQ(mLog.take().size(), 1U);
    ULogger::sULogger = nullptr;
    LSC_LOG_ERROR("no logger");
    LSC_LOG_ASSERT("no logger");
    EXPECT_EQ(mLog.take().size(), 1U);
}

}  // namespace
