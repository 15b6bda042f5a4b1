#pragma once

#include <log4cpp/AppenderSkeleton.hh>
#include <log4cpp/Category.hh>
#include <log4cpp/LoggingEvent.hh>

#include <string>
#include <vector>

namespace tessarin::tests {

/// A host's appender: keeps the messages that reach a category while it lives.
class RecordingAppender : public log4cpp::AppenderSkeleton {
public:
    explicit RecordingAppender(const std::string& category)
        : AppenderSkeleton("recording"), _category(log4cpp::Category::getInstance(category)) {
        _category.addAppender(*this);
    }
    ~RecordingAppender() override { _category.removeAppender(this); }

    void close() override {}
    bool requiresLayout() const override { return false; }
    void setLayout(log4cpp::Layout*) override {}

    std::vector<std::string> messages;
    std::vector<std::string> contexts;
    std::vector<int> levels;

protected:
    void _append(const log4cpp::LoggingEvent& event) override {
        messages.push_back(event.message);
        contexts.push_back(event.ndc);
        levels.push_back(event.priority);
    }

private:
    log4cpp::Category& _category;
};

} // namespace tessarin::tests
