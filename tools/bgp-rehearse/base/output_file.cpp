#include "base/output_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include "base/exit_status.h"
#include "base/text_escape.h"

namespace bgp_rehearse {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse(const std::string& option, const std::string& name, const std::string& reason)
{
    throw CommandError(ExitStatus::BadInput, fmt::format("{} {}: {}", option, escaped(name), reason));
}

fs::path follow_links(const std::string& option, const std::string& name)
{
    constexpr int kMostLinks = 40;
    fs::path path = name;
    std::error_code failed;
    for (int i = 0; i < kMostLinks; ++i) {
        if (!fs::is_symlink(fs::symlink_status(path, failed))) {
            return path;
        }
        // operator/ gives an absolute link target as it is.
        path = path.parent_path() / fs::read_symlink(path, failed);
    }
    refuse(option, name, "too many symbolic links");
}

std::string folder_of(const std::string& file)
{
    const std::string folder = fs::path(file).parent_path();
    return folder.empty() ? "." : folder;
}

void check_folder(const std::string& option, const std::string& name, const std::string& folder)
{
    struct stat status {};
    if (stat(folder.c_str(), &status) != 0) {
        refuse(option, name, fmt::format("the folder {}: {}", escaped(folder), std::strerror(errno)));
    }
    if (!S_ISDIR(status.st_mode)) {
        refuse(option, name, fmt::format("{} is not a folder", escaped(folder)));
    }
}

void check_writable(const std::string& option, const std::string& name, const std::string& folder)
{
    if (access(folder.c_str(), W_OK | X_OK) != 0) {
        refuse(option, name, fmt::format("no file can be made in {}: {}", escaped(folder), std::strerror(errno)));
    }
}

// A call that a signal broke off is made again.
template <typename Call>
int uninterrupted(Call call)
{
    int result = 0;
    do {
        result = call();
    } while (result < 0 && errno == EINTR);
    return result;
}

mode_t mode_of_umask()
{
    const mode_t mask = umask(077);
    umask(mask);
    return 0666 & ~mask;
}

// What a mode leaves to whom a file may be for. Those of another group count as others.
mode_t narrowed(mode_t mode, gid_t group, const Readers& most)
{
    const mode_t others = most.mode & 0006;
    const bool same_group = !most.group || *most.group == group;
    return mode & (0711 | (same_group ? most.mode & 0060 : most.mode & others << 3) | others);
}

[[noreturn]] void not_written(const std::string& target, const char* reason)
{
    throw CommandError(ExitStatus::NotWritten, fmt::format("{} could not be written: {}", escaped(target), reason));
}

}  // namespace

std::string replaceable_file(const std::string& option, const std::string& name)
{
    const fs::path file = follow_links(option, name);
    if (!file.has_filename()) {
        refuse(option, name, "this is a folder; name a file");
    }
    check_folder(option, name, folder_of(file));
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) {
        if (errno != ENOENT) {
            refuse(option, name, std::strerror(errno));
        }
        check_writable(option, name, folder_of(file));
        return file;
    }
    if (S_ISDIR(status.st_mode)) {
        refuse(option, name, "this is a folder; name a file");
    }
    if (!S_ISREG(status.st_mode)) {
        refuse(option, name, "this is not an ordinary file");
    }
    check_writable(option, name, folder_of(file));
    if (access(file.c_str(), W_OK) != 0) {
        refuse(option, name, fmt::format("the file is there and cannot be replaced: {}", std::strerror(errno)));
    }
    return file;
}

void refuse_same_file(const std::string& option, const std::string& name, const std::string& what,
                      const std::string& other)
{
    std::error_code failed;
    const bool same = fs::exists(name, failed)
                          ? fs::equivalent(name, other, failed)
                          : fs::weakly_canonical(name, failed) == fs::weakly_canonical(other, failed);
    if (same) {
        refuse(option, name, fmt::format("this is {}; choose another name", what));
    }
}

Readers readers_of(const std::string& file)
{
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) {
        return {0, std::nullopt};
    }
    return {status.st_mode & 0066, status.st_gid};
}

OutputFile::OutputFile(const std::string& option, std::string target, const Readers& most)
    : target_(std::move(target)), folder_(folder_of(target_))
{
    make_temporary(option);
    struct stat old {};
    const bool replaces = stat(target_.c_str(), &old) == 0;
    // Where owner or mode cannot be taken over the file is its maker's alone, which is the safe side. Only root may
    // give a file away.
    if (replaces && geteuid() == 0 && fchown(descriptor_, old.st_uid, old.st_gid) != 0) {
        return;
    }
    struct stat made {};
    if (fstat(descriptor_, &made) == 0) {
        const mode_t mode = replaces ? old.st_mode & 0777 : mode_of_umask();
        static_cast<void>(fchmod(descriptor_, narrowed(mode, made.st_gid, most)));
    }
}

OutputFile::~OutputFile()
{
    if (!temporary_.empty()) {
        unlink(temporary_.c_str());
    }
    close(descriptor_);
}

void OutputFile::write(std::string_view text) const
{
    if (!write_all(descriptor_, text.data(), text.size())) {
        not_written(target_, std::strerror(errno));
    }
}

void OutputFile::make_temporary(const std::string& option)
{
    for (unsigned int attempt = 0;; ++attempt) {
        std::string name = fmt::format("{}/.bgp-rehearse-{}-{}", folder_, getpid(), attempt);
        descriptor_ = uninterrupted([&] { return open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600); });
        if (descriptor_ >= 0) {
            temporary_ = std::move(name);
            return;
        }
        if (errno != EEXIST) {
            refuse(option, target_,
                   fmt::format("no file can be made in {}: {}", escaped(folder_), std::strerror(errno)));
        }
    }
}

void OutputFile::put_in_place()
{
    if (uninterrupted([&] { return fsync(descriptor_); }) != 0 || rename(temporary_.c_str(), target_.c_str()) != 0) {
        not_written(target_, std::strerror(errno));
    }
    temporary_.clear();
    sync_folder();
}

// The file is in place already: a folder that cannot be opened or synchronised by its nature is left alone, and only a
// disk that fails is told.
void OutputFile::sync_folder() const
{
    const int folder = uninterrupted([&] { return open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
    if (folder < 0) {
        return;
    }
    const int failed = uninterrupted([&] { return fsync(folder); }) != 0 ? errno : 0;
    close(folder);
    if (failed == EIO || failed == ENOSPC || failed == EDQUOT) {
        throw CommandError(ExitStatus::NotWritten,
                           fmt::format("{} is written, but may be lost if the power fails now: the folder {}: {}",
                                       escaped(target_), escaped(folder_), std::strerror(failed)));
    }
}

bool write_all(int descriptor, const char* text, std::size_t size) noexcept
{
    while (size > 0) {
        const ssize_t written = write(descriptor, text, size);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            errno = written == 0 ? EIO : errno;  // no progress, now or ever
            return false;
        }
        text += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

}  // namespace bgp_rehearse
