#pragma once

#include <logging/Export.h>

#include <log4cpp/Category.hh>
#include <log4cpp/Priority.hh>

#include <functional>
#include <string>

namespace tessarin::logging {

/// Where the libraries of this project write their messages: named categories of log4cpp.
///
/// A source file fetches its category once, at load, asks isEnabled() before it puts a message together, and hands the
/// text to log(); the macro of logging/Log.h does both.
///
/// A host that does nothing gets errors, one line each, on the standard error stream. A host with a log4cpp set-up of
/// its own keeps it, whether it was made before or after this library was loaded: a priority that the host gives to a
/// category holds, and as soon as an appender can be reached from a category, its messages go there and no longer to
/// the standard error stream. A category without a priority is set to ERROR when it is first made here, so what the
/// root category says about priorities isn't asked: a host that wants more from a category sets that category, or calls
/// setLevel().
///
/// Nothing here throws. Levels are log4cpp's priorities: the smaller, the more urgent.
class TESSARIN_LOGGING_EXPORT Logger {
public:
    /// Failures; on by default. Equal to log4cpp's ERROR.
    static constexpr int errorLevel = 300;
    /// Progress; off by default. Equal to log4cpp's INFO.
    static constexpr int infoLevel = 600;

    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    /// Never null. Usable from static initialisers and, as long as log4cpp itself stands, from destructors at exit.
    static Logger* instance();

    /// The category of that name. Where there is none it is made, or with create false the result is null. Categories
    /// belong to log4cpp and live to the end of the process.
    log4cpp::Category* getCategory(const std::string& name, bool create);

    /// True if a message of that level would be written. Costs a comparison unless the host has left the priority of
    /// the category to its parents. A null category has nothing enabled.
    static bool isEnabled(log4cpp::Category* category, int level) {
        if (!category) {
            return false;
        }
        const int priority = category->log4cpp::Category::getPriority();
        return level <= (priority == log4cpp::Priority::NOTSET ? category->getChainedPriority() : priority);
    }

    /// Writes one message, if it is enabled. To appenders of the host the text goes as it is, with the source file and
    /// line in the nested diagnostic context (%x of a pattern layout). On the standard error stream text and context
    /// are made printable (see printableText), since they may quote anybody's document.
    static void log(log4cpp::Category* category, int level, const char* file, int line, const std::string& text);

    /// A message that is enabled and about to be written.
    struct Message {
        const log4cpp::Category& category;
        int level;
        const std::string& text;
        const std::string& context; ///< the nested diagnostic context, without the source file
    };

    /// Answers whether a message is to be written.
    using Filter = std::function<bool(const Message&)>;

    /// Lets a filter see every message from now on, in whatever thread it is written; an empty one ends that. A filter
    /// that throws lets its message through.
    /// @return the filter before.
    Filter setFilter(Filter filter);

    /// Sets the priority of all categories that came or will come from getCategory() with create true.
    void setLevel(int level);

private:
    class Impl;

    Logger();
    ~Logger() = default;

    Impl* _impl;
};

} // namespace tessarin::logging
