#include <viewer/QuietReader.h>

#include <viewer/ViewerError.h>

#include <logging/Logger.h>
#include <xml_parser/XMLNode.h>

#include <fstream>

namespace tessarin::viewer {

namespace {

/// Keeps a category silent for a while.
class Silence {
public:
    explicit Silence(const char* name)
        : category(logging::Logger::instance()->getCategory(name, true)), priority(category->getPriority()) {
        category->setPriority(log4cpp::Priority::EMERG);
    }
    ~Silence() { category->setPriority(priority); }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    log4cpp::Category* category;
    log4cpp::Priority::Value priority;
};

} // namespace

QuietReader::QuietReader(const std::filesystem::path& file) {
    requireFile(file);
    setPruneEmptyTags(false);
    setCreateAttributesFromPrimitiveChildren(false);

    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw ViewerError(file.string() + ": can't be opened");
    setSourceName(file.string());
    const Silence silence("xml");
    parse(stream);
    if (!getRoot())
        throw ViewerError(file.string() + ": " + (getErrorLine() > 0 ? getErrorMessage() : getErrorReason()));
}

void requireFile(const std::filesystem::path& file) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(file, error);
    if (!std::filesystem::exists(status))
        throw ViewerError(file.string() + ": no such file");
    if (std::filesystem::is_directory(status))
        throw ViewerError(file.string() + ": is a folder, not a file");
    // Reading from a pipe or a device might never end.
    if (!std::filesystem::is_regular_file(status))
        throw ViewerError(file.string() + ": no regular file, it isn't read");
}

} // namespace tessarin::viewer
