#pragma once

#include <log4cpp/AppenderSkeleton.hh>
#include <log4cpp/Category.hh>
#include <log4cpp/LoggingEvent.hh>

#include <string>
#include <utility>
#include <vector>

namespace tessarin::doubles {

/// Keeps what a category logs, all levels to INFO, as long as it lives: "300 text" or "600 text".
class LogCapture : public log4cpp::AppenderSkeleton {
public:
    explicit LogCapture(const std::string& name = "agent")
        : AppenderSkeleton("LogCapture"), category(log4cpp::Category::getInstance(name)),
          priority(category.getPriority()) {
        category.setPriority(log4cpp::Priority::INFO);
        category.addAppender(*this);
    }

    ~LogCapture() override {
        category.removeAppender(this);
        category.setPriority(priority);
    }

    /// The lines since the last call.
    std::vector<std::string> take() { return std::exchange(lines, {}); }

    /// Those of level 300 alone.
    std::vector<std::string> takeErrors() {
        std::vector<std::string> errors;
        for (const std::string& line : take())
            if (line.compare(0, 4, "300 ") == 0)
                errors.push_back(line.substr(4));
        return errors;
    }

    void close() override {}
    bool requiresLayout() const override { return false; }
    void setLayout(log4cpp::Layout*) override {}

    std::string lastContext; // the nested diagnostic context, in which the place in the source stands

protected:
    void _append(const log4cpp::LoggingEvent& event) override {
        lines.push_back(std::to_string(event.priority) + ' ' + event.message);
        lastContext = event.ndc;
    }

private:
    log4cpp::Category& category;
    const int priority;
    std::vector<std::string> lines;
};

} // namespace tessarin::doubles
