#include <logging/Log.h>
#include <logging/PrintableText.h>
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
    log4cpp::NDC::push("crane.xml:17\n");
    Logger::log(category, 300, "dynamics/bullet/World.cpp", 7, "second");
    log4cpp::NDC::pop();
    Logger::log(nullptr, 0, "a.cpp", 1, "nobody's");
    TESSARIN_LOG(category, Logger::infoLevel, "call " << ++calls); // put together only where it is enabled
    TESSARIN_LOG(nullptr, Logger::errorLevel, "call " << ++calls);
    TESSARIN_LOG(category, Logger::errorLevel, "call " << ++calls << ' ' << 1234567);
    const std::string start = "[-0-9]{10} [0-9:]{8}\\.[0-9]{3} ERROR test\\.plain: ";
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::MatchesRegex(start + R"(no body\\nfor \\x1b\[1m"box" \(agent/AgentNode\.cpp:12\))" + '\n' +
                                      start + R"(second \(crane\.xml:17\\n dynamics/bullet/World\.cpp:7\))" + '\n' +
                                      start + R"(call 1 1234567 \(tests/layers/LoggerTest\.cpp:[0-9]+\))" + '\n'));
}

TEST(PrintableText, LeavesNothingThatSpeaksToATerminal) {
    const std::pair<std::string, std::string> rows[] = {
        {"f\xC3\xBCr \xE5\x90\x8D \xF0\x9F\x98\x80 \"\\", "f\xC3\xBCr \xE5\x90\x8D \xF0\x9F\x98\x80 \"\\"},
        {"a\nb\r\t\x1b[1m\x7F", "a\\nb\\x0d\\x09\\x1b[1m\\x7f"},
        {std::string("\0", 1) + "\xC2\x80\xC2\x9B\xC2\x9F\xC2\xA0", "\\x00\\u0080\\u009b\\u009f\xC2\xA0"},
        {"\xE2\x80\xA8\xE2\x80\xAE\xE2\x81\xA6\xD8\x9C", "\\u2028\\u202e\\u2066\\u061c"},
        {"\x9B|\xC2|\xC2", "\\x9b|\\xc2|\\xc2"},                 // alone, and cut off
        {"\xC1\x9B\xE0\x82\x9B\xED\xA0\x80\xF4\x90\x80\x80\xFF", // longer than needed, and beyond
         "\\xc1\\x9b\\xe0\\x82\\x9b\\xed\\xa0\\x80\\xf4\\x90\\x80\\x80\\xff"}};
    for (const auto& [text, expected] : rows)
        EXPECT_EQ(printableText(text), expected);
    EXPECT_EQ(quotedText("a b"), "\"a b\"");
    EXPECT_EQ(quotedText(std::string(79, 'x') + "\xC3\xBC"), '"' + std::string(79, 'x') + "...\"");
}

TEST(Logger, AsksTheFilterBeforeAMessageIsWritten) {
    LogCapture log("test.filtered");
    std::string seen;
    const auto keepBack = [&](const Logger::Message& message) {
        seen += message.category.getName() + ' ' + std::to_string(message.level) + ' ' + message.text + '|' +
                message.context;
        if (message.text == "broken")
            throw 1;
        return message.text != "unwanted";
    };
    EXPECT_FALSE(Logger::instance()->setFilter(keepBack));
    log4cpp::NDC::push("frame 7");
    for (const char* const text : {"unwanted", "broken"})
        Logger::log(fetch("test.filtered"), 300, "a.cpp", 1, text);
    log4cpp::NDC::pop();
    Logger::log(fetch("test.filtered"), 700, "a.cpp", 1, "not enabled");
    EXPECT_TRUE(Logger::instance()->setFilter(nullptr));
    Logger::log(fetch("test.filtered"), 300, "a.cpp", 1, "unwanted");
    EXPECT_EQ(seen, "test.filtered 300 unwanted|frame 7test.filtered 300 broken|frame 7");
    EXPECT_THAT(log.take(), ElementsAre("300 broken", "300 unwanted"));
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
