#include "RecordingAppender.h"

#include <logging/Log.h>

#include <log4cpp/NDC.hh>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace tessarin::logging {

namespace {

using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::MatchesRegex;
using tests::RecordingAppender;

log4cpp::Category* fetch(const std::string& name) {
    return Logger::instance()->getCategory(name, true);
}

TEST(Logger, WritesErrorsAloneToTheStandardErrorStream) {
    log4cpp::Category* category = fetch("test.plain");
    testing::internal::CaptureStderr();
    Logger::log(category, 600, "agent/AgentNode.cpp", 1, "not asked for");
    Logger::log(category, 300, "/opt/somebody/source/agent/AgentNode.cpp", 12, "no body\nfor \x1b[1m\"box\"");
    Logger::log(category, 300, "dynamics/bullet/World.cpp", 7, "second");
    Logger::log(nullptr, 0, "a.cpp", 1, "nobody's");
    const std::string output = testing::internal::GetCapturedStderr();
    const std::string time = "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3} ";
    EXPECT_THAT(output,
                MatchesRegex(time + R"(ERROR test\.plain: no body\\nfor \\x1b\[1m"box" \(agent/AgentNode\.cpp:12\))" +
                             '\n' + time + R"(ERROR test\.plain: second \(dynamics/bullet/World\.cpp:7\))" + '\n'));
}

TEST(Logger, MacroNamesItsPlaceAndPutsOnlyEnabledMessagesTogether) {
    log4cpp::Category* category = fetch("test.macro");
    int calls = 0;
    const auto count = [&] { return ++calls; };
    testing::internal::CaptureStderr();
    TESSARIN_LOG(category, Logger::infoLevel, "call " << count());
    TESSARIN_LOG(nullptr, Logger::errorLevel, "call " << count());
    TESSARIN_LOG(category, Logger::errorLevel, "call " << count() << ' ' << 1234567);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("call 1 1234567 (tests/layers/LoggerTest.cpp:"));
}

TEST(Logger, HandsMessagesToAppendersOfTheHost) {
    testing::internal::CaptureStderr();
    {
        RecordingAppender early("test.early");
        Logger::log(fetch("test.early"), 300, "agent/A.cpp", 3, "as it is\n");
        EXPECT_THAT(early.messages, ElementsAre("as it is\n"));
        EXPECT_THAT(early.contexts, ElementsAre("agent/A.cpp:3"));
        EXPECT_THAT(early.levels, ElementsAre(300));
    }
    log4cpp::Category* child = fetch("test.parent.child");
    RecordingAppender late("test.parent");
    log4cpp::NDC::push("frame 7");
    Logger::log(child, 300, "b.cpp", 4, "to the parent's");
    log4cpp::NDC::pop();
    Logger::log(child, 600, "b.cpp", 4, "not enabled");
    EXPECT_THAT(late.messages, ElementsAre("to the parent's"));
    EXPECT_THAT(late.contexts, ElementsAre("frame 7 b.cpp:4"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    child->setAdditivity(false);
    testing::internal::CaptureStderr();
    Logger::log(child, 300, "b.cpp", 5, "cut off from the parent's");
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("cut off"));
    EXPECT_EQ(late.messages.size(), 1U);
}

TEST(Logger, KeepsPrioritiesOfTheHost) {
    log4cpp::Category::getInstance("test.asked").setPriority(log4cpp::Priority::INFO);
    EXPECT_TRUE(Logger::isEnabled(fetch("test.asked"), 600));
    EXPECT_FALSE(Logger::isEnabled(fetch("test.asked"), 700));

    log4cpp::Category* category = fetch("test.later");
    EXPECT_TRUE(Logger::isEnabled(category, 300));
    EXPECT_FALSE(Logger::isEnabled(category, 301));
    category->setPriority(log4cpp::Priority::FATAL);
    EXPECT_FALSE(Logger::isEnabled(category, 300));

    log4cpp::Category::getInstance("test.host").setPriority(log4cpp::Priority::WARN);
    log4cpp::Category* heir = fetch("test.host.heir");
    EXPECT_TRUE(Logger::isEnabled(heir, 400));
    EXPECT_FALSE(Logger::isEnabled(heir, 500));

    category->setPriority(log4cpp::Priority::NOTSET);
    EXPECT_EQ(fetch("test.later"), category);
    EXPECT_TRUE(Logger::isEnabled(category, 600))
        << "the host has given it to the root, and fetching it again is nothing";
}

TEST(Logger, MakesCategoriesOnlyWhenAsked) {
    EXPECT_EQ(Logger::instance()->getCategory("test.unknown", false), nullptr);
    log4cpp::Category* category = fetch("test.unknown");
    EXPECT_EQ(category, &log4cpp::Category::getInstance("test.unknown"));
    EXPECT_EQ(Logger::instance()->getCategory("test.unknown", false), category);
}

TEST(LoggerDeathTest, SetLevelReachesCategoriesFetchedBeforeAndAfter) {
    const auto work = [] {
        log4cpp::Category* before = fetch("test.before");
        log4cpp::Category* others = &log4cpp::Category::getInstance("test.others");
        others->setPriority(log4cpp::Priority::WARN);
        Logger::instance()->setLevel(600);
        const bool areOpen = Logger::isEnabled(before, 600) && Logger::isEnabled(fetch("test.after"), 600);
        std::exit(areOpen && !Logger::isEnabled(others, 600) ? 0 : 1);
    };
    EXPECT_EXIT(work(), ExitedWithCode(0), "");
}

/// Stands before any category is fetched, as a static of a host may.
struct LogsAtExit {
    ~LogsAtExit() { TESSARIN_LOG(category, Logger::errorLevel, "last words"); }
    log4cpp::Category* category = nullptr;
} logsAtExit;

TEST(LoggerDeathTest, WorksWhileStaticsAreTornDown) {
    const auto work = [] {
        logsAtExit.category = fetch("test.exit");
        std::exit(0);
    };
    EXPECT_EXIT(work(), ExitedWithCode(0), "ERROR test.exit: last words");
}

} // namespace

} // namespace tessarin::logging
