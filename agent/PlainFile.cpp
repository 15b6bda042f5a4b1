#include <agent/PlainFile.h>

#include <osgDB/FileNameUtils>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace tessarin::agent {

namespace {

std::string listOf(const std::set<std::string>& kinds) {
    std::string list;
    for (const std::string& kind : kinds)
        list += (list.empty() ? "" : ", ") + kind;
    return list;
}

/// OpenSceneGraph loads a library for each class that a scene file of its own names, as "library::Class", and takes a
/// path for the library's name as well.
std::string findFaultOfClassNames(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    constexpr std::size_t sizeOfHead = 64;
    if (text.substr(0, sizeOfHead).find("zlib") != std::string::npos)
        return path + ": is compressed, so that it can't be told which libraries it would load; it isn't read";
    for (std::size_t i = text.find("::"); i != std::string::npos; i = text.find("::", i + 2)) {
        std::size_t begin = i;
        while (begin > 0 && text[begin - 1] > ' ' && text[begin - 1] != '"')
            --begin;
        if (text.substr(begin, i - begin).find_first_of("/\\") != std::string::npos)
            return path + ": names a class of the library " + text.substr(begin, i - begin) +
                   " by the library's path; it isn't read";
    }
    return {};
}

} // namespace

std::string findFaultOfFile(const std::string& path, const std::set<std::string>& kinds, const char* what) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (osgDB::containsServerAddress(path))
        return path + ": is the address of a server; a file of this machine is expected, and nothing is asked for";
    const std::string kind = osgDB::getLowerCaseFileExtension(path);
    if (kinds.count(kind) == 0)
        return path + ": no " + what + " of a known kind, it isn't read; known are " + listOf(kinds);
    if (!std::filesystem::exists(status))
        return path + ": no such file";
    if (!std::filesystem::is_regular_file(status))
        return path + ": no regular file, it isn't read";
    return kind == "osg" || kind == "osgb" || kind == "osgt" ? findFaultOfClassNames(path) : std::string();
}

} // namespace tessarin::agent
