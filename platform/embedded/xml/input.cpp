#include "xml/input.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

#include "xml/load_errors.h"
#include "xml/look.h"
#include "xml/unpacked.h"

namespace bgp_platform::xml {

namespace {

constexpr char kStandardInput[] = "-";

// A call that a signal broke off is made again.
template <typename Call>
auto uninterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

class FileSource : public Source {
public:
    FileSource(const std::string& path, const std::string& name, const Progress& progress)
        : name_(name), progress_(progress)
    {
        // Without waiting for a pipe's writer, who may never come.
        descriptor_ = uninterrupted([&] {
            return path == kStandardInput ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                          : open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        });
        if (descriptor_ < 0) {
            fail(errno);
        }
    }
    ~FileSource() override { close(descriptor_); }

    // Refuses what is no file to read.
    void check()
    {
        struct stat status {};
        if (fstat(descriptor_, &status) != 0) {
            fail(errno);
        }
        if (S_ISDIR(status.st_mode)) {
            refuse("this is a folder; name a file");
        }
        if (S_ISREG(status.st_mode)) {
            total_ = static_cast<std::size_t>(status.st_size);
        }
        if (const int flags = fcntl(descriptor_, F_GETFL); (flags & O_NONBLOCK) != 0) {
            if (S_ISFIFO(status.st_mode)) {
                wait_for_writer();
            }
            fcntl(descriptor_, F_SETFL, flags & ~O_NONBLOCK);
        }
    }

    std::size_t read(char* buffer, std::size_t size) override
    {
        if (first_) {
            *buffer = *std::exchange(first_, std::nullopt);
            return 1;
        }
        const ssize_t count = uninterrupted([&] { return ::read(descriptor_, buffer, size); });
        if (count < 0) {
            fail(errno);
        }
        report(static_cast<std::size_t>(count));
        return static_cast<std::size_t>(count);
    }

private:
    static constexpr std::size_t kReportEvery = 1 << 20;

    // A pipe that somebody has open to write, or had and left something in it, is read like a file.
    void wait_for_writer()
    {
        constexpr int kMilliseconds = 1000;
        pollfd pipe{descriptor_, POLLIN, 0};
        if (uninterrupted([&] { return poll(&pipe, 1, kMilliseconds); }) != 0) {
            return;
        }
        char letter = 0;
        const ssize_t count = uninterrupted([&] { return ::read(descriptor_, &letter, 1); });
        if (count == 0) {
            refuse("this is a pipe that nobody writes to; name a file, or - for standard input");
        }
        if (count == 1) {
            first_ = letter;
        }
    }

    void report(std::size_t count)
    {
        bytes_ += count;
        if (progress_ && (count == 0 || bytes_ - reported_ >= kReportEvery)) {
            reported_ = bytes_;
            progress_(bytes_, total_);
        }
    }

    [[noreturn]] void fail(int error) const { refuse(std::generic_category().message(error)); }
    [[noreturn]] void refuse(const std::string& what) const { throw LoadError(name_ + ": " + what); }

    const std::string& name_;
    const Progress& progress_;
    int descriptor_ = -1;
    std::optional<char> first_;  // read already
    std::size_t bytes_ = 0;
    std::size_t reported_ = 0;
    std::size_t total_ = 0;
};

std::unique_ptr<PeekedSource> peeked(std::unique_ptr<Source> source)
{
    return std::make_unique<PeekedSource>(std::move(source));
}

}  // namespace

std::string shown_name(const std::string& path)
{
    return path == kStandardInput ? "standard input" : path;
}

std::unique_ptr<PeekedSource> open_input(const std::string& path, const std::string& name, const Progress& progress)
{
    auto file = std::make_unique<FileSource>(path, name, progress);
    file->check();
    auto input = peeked(std::move(file));
    if (is_gzip(input->head())) {
        input = peeked(gunzipped(std::move(input), name));
    }
    if (may_be_packed(input->head())) {
        input = peeked(unpacked(std::move(input), name));
    }
    return input;  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): of a pointer that owns
}

}  // namespace bgp_platform::xml
