#include <viewer/FileWriter.h>

#include <viewer/ViewerError.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>
#include <system_error>

namespace tessarin::viewer {

using Path = std::filesystem::path;
using Print = std::function<void(std::ostream&)>;

namespace {

[[noreturn]] void fail(const Path& file, int error) {
    throw ViewerError(file.string() + ": can't be written" +
                      (error != 0 ? std::string(": ") + std::strerror(error) : std::string()));
}

/// @return 0, or what was wrong.
int printTo(const Path& file, const Print& print) {
    errno = 0;
    std::ofstream stream(file, std::ios::binary);
    if (stream)
        print(stream);
    stream.close();
    return stream ? 0 : errno != 0 ? errno : EIO;
}

bool isOwnOutput(const Path& file) {
    struct stat given {
    }, own{};
    return ::stat(file.c_str(), &given) == 0 && ::fstat(STDOUT_FILENO, &own) == 0 && given.st_dev == own.st_dev &&
           given.st_ino == own.st_ino;
}

/// An empty file with a name of its own, which goes with this unless it has got another one.
class NewFile {
public:
    explicit NewFile(const Path& folder) {
        std::FILE* made = nullptr;
        for (int i = 0; !made && (i == 0 || errno == EEXIST); ++i) {
            path = folder / (".tessarin_" + std::to_string(::getpid()) + "_" + std::to_string(i));
            made = std::fopen(path.c_str(), "wx");
        }
        error = made ? 0 : errno;
        if (made)
            std::fclose(made);
    }
    ~NewFile() {
        if (error == 0)
            ::unlink(path.c_str());
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    bool belongLike(const struct stat& other) const {
        return ::chown(path.c_str(), other.st_uid, other.st_gid) == 0 &&
               ::chmod(path.c_str(), other.st_mode & 07777) == 0;
    }

    bool takeName(const Path& name) const { return ::rename(path.c_str(), name.c_str()) == 0; }

    Path path;
    int error = 0;
};

/// @return false if the file has to be written in place.
bool replace(const Path& file, const Print& print) {
    std::error_code error;
    const bool isNew = std::filesystem::symlink_status(file, error).type() == std::filesystem::file_type::not_found;
    const Path target = isNew ? file : std::filesystem::canonical(file, error);
    struct stat old {};
    if (!isNew && (error || ::stat(target.c_str(), &old) != 0 || !S_ISREG(old.st_mode) || old.st_nlink != 1 ||
                   ::access(target.c_str(), W_OK) != 0))
        return false;

    const NewFile fresh(target.has_parent_path() ? target.parent_path() : Path("."));
    if (fresh.error == EACCES || fresh.error == EPERM || fresh.error == EROFS)
        return false;
    if (fresh.error != 0)
        fail(file, fresh.error);
    if (!isNew && !fresh.belongLike(old))
        return false;
    if (const int wrong = printTo(fresh.path, print))
        fail(file, wrong);
    return fresh.takeName(target);
}

} // namespace

void writeFile(const Path& file, const Print& print) {
    if (isOwnOutput(file)) {
        errno = 0;
        print(std::cout);
        if (!std::cout.flush())
            fail(file, errno);
    } else if (!replace(file, print)) {
        if (const int wrong = printTo(file, print))
            fail(file, wrong);
    }
}

} // namespace tessarin::viewer
