#include <logging/Logger.h>
#include <logging/PrintableText.h>

#include <log4cpp/LoggingEvent.hh>
#include <log4cpp/NDC.hh>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace tessarin::logging {

namespace {

// log4cpp deletes its categories at exit, in its turn of static destruction. Touching them when this library is loaded
// puts that turn behind the destructors of every library that links to this one.
[[maybe_unused]] const log4cpp::Category& rootCategory = log4cpp::Category::getRoot();

bool inheritsPriority(const log4cpp::Category& category) {
    if (category.getPriority() != log4cpp::Priority::NOTSET) {
        return false;
    }
    const log4cpp::Category* parent = category.getParent();
    return !parent || !parent->getParent() || inheritsPriority(*parent);
}

bool reachesAppender(log4cpp::Category* category) {
    for (; category; category = category->getParent()) {
        if (category->getAppender()) {
            return true;
        }
        if (!category->getAdditivity()) {
            return false;
        }
    }
    return false;
}

/// Paths from the source root stay; of absolute ones, which belong to some machine, folder and file remain.
std::string_view shortPath(const char* file) {
    const std::string_view path = file ? file : "";
    if (path.empty() || (path.front() != '/' && path.find(':') == std::string_view::npos)) {
        return path;
    }
    const std::size_t name = path.find_last_of("/\\");
    const std::size_t folder =
        name == std::string_view::npos || name == 0 ? std::string_view::npos : path.find_last_of("/\\", name - 1);
    return folder == std::string_view::npos ? path : path.substr(folder + 1);
}

std::string location(const char* file, int line) {
    return std::string(shortPath(file)) + ':' + std::to_string(line);
}

std::string now() {
    const auto time = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    const auto sinceEpoch = std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
    std::tm parts{};
#if defined(_WIN32)
    localtime_s(&parts, &seconds);
#else
    localtime_r(&seconds, &parts);
#endif
    char date[32] = "";
    char text[40] = "";
    std::strftime(date, sizeof(date), "%Y-%m-%d %H:%M:%S", &parts);
    std::snprintf(text, sizeof(text), "%s.%03d", date, static_cast<int>(sinceEpoch % 1000));
    return text;
}

void writeToStandardError(log4cpp::Category& category, int level, const std::string& context, const std::string& text) {
    const std::string line = now() + ' ' + log4cpp::Priority::getPriorityName(level) + ' ' +
                             printableText(category.getName()) + ": " + printableText(text) + " (" +
                             printableText(context) + ")\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

void writeToAppenders(log4cpp::Category& category, int level, const std::string& context, const std::string& text) {
    category.callAppenders(log4cpp::LoggingEvent(category.getName(), text, context, level));
}

} // namespace

class Logger::Impl {
public:
    std::mutex mutex;
    std::vector<log4cpp::Category*> categories;
    std::optional<int> level;

    bool isWanted(const Message& message) {
        std::shared_ptr<const Filter> asked; // it may be replaced while it is called
        {
            const std::lock_guard<std::mutex> lock(mutex);
            asked = filter;
        }
        try {
            return !asked || (*asked)(message);
        } catch (...) {
            return true;
        }
    }

    std::shared_ptr<const Filter> filter;
};

Logger::Logger() : _impl(new Impl) {}

Logger* Logger::instance() {
    // Never deleted: somebody may log while statics are torn down.
    static Logger* const logger = new Logger;
    return logger;
}

log4cpp::Category* Logger::getCategory(const std::string& name, bool create) {
    try {
        if (!create) {
            return log4cpp::Category::exists(name);
        }
        log4cpp::Category* category = &log4cpp::Category::getInstance(name);
        const std::lock_guard<std::mutex> lock(_impl->mutex);
        std::vector<log4cpp::Category*>& known = _impl->categories;
        if (std::find(known.begin(), known.end(), category) == known.end()) {
            known.push_back(category);
            if (_impl->level) {
                category->setPriority(*_impl->level);
            } else if (inheritsPriority(*category)) {
                category->setPriority(errorLevel);
            }
        }
        return category;
    } catch (...) {
        return nullptr;
    }
}

void Logger::log(log4cpp::Category* category, int level, const char* file, int line, const std::string& text) {
    try {
        if (!isEnabled(category, level)) {
            return;
        }
        std::string context = log4cpp::NDC::get();
        if (!instance()->_impl->isWanted({*category, level, text, context})) {
            return;
        }
        if (!context.empty()) {
            context += ' ';
        }
        context += location(file, line);
        if (reachesAppender(category)) {
            writeToAppenders(*category, level, context, text);
        } else {
            writeToStandardError(*category, level, context, text);
        }
    } catch (...) {
    }
}

Logger::Filter Logger::setFilter(Filter filter) {
    std::shared_ptr<const Filter> next;
    if (filter) {
        next = std::make_shared<const Filter>(std::move(filter));
    }
    const std::lock_guard<std::mutex> lock(_impl->mutex);
    _impl->filter.swap(next);
    return next ? *next : Filter();
}

void Logger::setLevel(int level) {
    try {
        const std::lock_guard<std::mutex> lock(_impl->mutex);
        _impl->level = level;
        for (log4cpp::Category* category : _impl->categories) {
            category->setPriority(level);
        }
    } catch (...) {
    }
}

} // namespace tessarin::logging
