#include <logging/Log.h>
#include <tests/doubles/LogCapture.h>

#include <log4cpp/NDC.hh>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace tessarin::logging {

namespace {

using doubles::LogCapture;
using testing::ElementsAre;
using testing::ExitedWithCode;

log4cpp::Category* fetch(const std::string& name) {
    return Logger::instance()->getCategory(name, true);
}

TEST(Logger, WritesErrorsAloneToTheStandardErrorStream) {
    log4cpp::Category* const category = fetch("test.plain");
    int calls = 0;
    testing::internal::CaptureStderr();
    Logger::log(category, 600, "agent/AgentNode.cpp", 1, "not asked for");
    Logger::log(category, 300, "/opt/somebody/source/agent/AgentNode.cpp", 12, "no body\nfor \x1b[1m\"box\"");
    Logger::log(category, 300, "dynamics/bullet/World.cpp", 7, "second");
    Logger::log(nullptr, 0, "a.cpp", 1, "nobody's");
    TESSARIN_LOG(category, Logger::infoLevel, "call " << ++calls); // put together only where it is enabled
    TESSARIN_LOG(nullptr, Logger::errorLevel, "call " << ++calls);
    TESSARIN_LOG(category, Logger::errorLevel, "call " << ++calls << ' ' << 1234567);
    const std::string start = "[-0-9]{10} [0-9:]{8}\\.[0-9]{3} ERROR test\\.plain: ";
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::MatchesRegex(start + R"(no body\\nfor \\x1b\[1m"box" \(agent/AgentNode\.cpp:12\))" + '\n' +
                                      start + R"(second \(dynamics/bullet/World\.cpp:7\))" + '\n' + start +
                                      R"(call 1 1234567 \(tests/layers/LoggerTest\.cpp:[0-9]+\))" + '\n'));
}

TEST(Logger, HandsMessagesToAppendersOfTheHost) {
    testing::internal::CaptureStderr();
    LogCapture early("test.early");
    Logger::log(fetch("test.early"), 300, "agent/A.cpp", 3, "as it is\n");
    EXPECT_THAT(early.take(), ElementsAre("300 as it is\n"));
    EXPECT_EQ(early.lastContext, "agent/A.cpp:3");

    log4cpp::Category* const child = fetch("test.parent.child");
    LogCapture late("test.parent");
    log4cpp::NDC::push("frame 7");
    Logger::log(child, 300, "b.cpp", 4, "to the parent's");
    log4cpp::NDC::pop();
    Logger::log(child, 600, "b.cpp", 4, "not enabled");
    EXPECT_THAT(late.take(), ElementsAre("300 to the parent's"));
    EXPECT_EQ(late.lastContext, "frame 7 b.cpp:4");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    child->setAdditivity(false);
    testing::internal::CaptureStderr();
    Logger::log(child, 300, "b.cpp", 5, "cut off from the parent's");
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("cut off"));
    EXPECT_TRUE(late.take().empty());
}

TEST(Logger, KeepsPrioritiesOfTheHost) {
    EXPECT_EQ(Logger::instance()->getCategory("test.asked", false), nullptr) << "made only when asked";
    log4cpp::Category::getInstance("test.asked").setPriority(log4cpp::Priority::INFO);
    EXPECT_EQ(Logger::instance()->getCategory("test.asked", false), fetch("test.asked"));
    EXPECT_TRUE(Logger::isEnabled(fetch("test.asked"), 600) && !Logger::isEnabled(fetch("test.asked"), 700));

    log4cpp::Category::getInstance("test.host").setPriority(log4cpp::Priority::WARN);
    EXPECT_TRUE(Logger::isEnabled(fetch("test.host.heir"), 400) && !Logger::isEnabled(fetch("test.host.heir"), 500));

    log4cpp::Category* const category = fetch("test.later");
    EXPECT_TRUE(Logger::isEnabled(category, 300) && !Logger::isEnabled(category, 301));
    category->setPriority(log4cpp::Priority::NOTSET);
    EXPECT_TRUE(Logger::isEnabled(fetch("test.later"), 600)) << "given to the root, and not taken back";
}

/// Stands before any category is fetched, as a static of a host may.
struct LogsAtExit {
    ~LogsAtExit() { TESSARIN_LOG(category, Logger::errorLevel, "last words"); }
    log4cpp::Category* category = nullptr;
} logsAtExit;

TEST(LoggerDeathTest, SetLevelReachesCategoriesBeforeAndAfterAndStaticsAtTheirEnd) {
    const auto work = [] {
        logsAtExit.category = fetch("test.before");
        log4cpp::Category& others = log4cpp::Category::getInstance("test.others");
        others.setPriority(log4cpp::Priority::WARN);
        Logger::instance()->setLevel(600);
        const bool areOpen = Logger::isEnabled(logsAtExit.category, 600) && Logger::isEnabled(fetch("test.after"), 600);
        std::exit(areOpen && !Logger::isEnabled(&others, 600) ? 0 : 1);
    };
    EXPECT_EXIT(work(), ExitedWithCode(0), "ERROR test.before: last words");
}

} // namespace

} // namespace tessarin::logging
