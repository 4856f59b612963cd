#include "fleet/plan/repository.h"

#include <charconv>
#include <filesystem>
#include <string_view>

namespace bgp_rehearse {

namespace {

namespace fs = std::filesystem;

// "100644 blob 1f7a7a472abf3dd9643fd615f6da379c4acb3e3a    1234\tedge.xml"
RepositoryFile file_in(const std::string& line)
{
    const std::size_t tab = line.find('\t');
    const std::size_t type = line.find(' ');
    const std::size_t object = line.find(' ', type + 1);
    const std::size_t size = line.find(' ', object + 1);
    if (tab == std::string::npos || size == std::string::npos || size > tab) {
        throw InputError("git lists its files in an unknown form");
    }
    RepositoryFile file;
    const std::string_view mode(line.data(), type);
    file.kind = mode == "160000"   ? RepositoryFile::Kind::Submodule
                : mode == "120000" ? RepositoryFile::Kind::Link
                                   : RepositoryFile::Kind::File;
    file.path = line.substr(tab + 1);
    file.object = line.substr(object + 1, size - object - 1);
    const std::size_t digits = line.find_first_not_of(' ', size);
    std::from_chars(line.data() + digits, line.data() + tab, file.bytes);
    return file;
}

}  // namespace

bool is_repository(const std::string& folder)
{
    std::error_code failed;
    const fs::path path = folder;
    const bool bare = fs::is_regular_file(path / "HEAD", failed) && fs::is_directory(path / "objects", failed) &&
                      fs::is_directory(path / "refs", failed);
    return bare || fs::exists(path / ".git", failed);
}

void each_file_of(const std::string& repository, const std::function<void(const RepositoryFile&)>& take)
{
    GitProcess git(repository, {"ls-tree", "-r", "-z", "-l", "--full-tree", "HEAD"});
    while (const std::optional<std::string> line = git.read_to('\0')) {
        take(file_in(*line));
    }
    if (const std::string failure = git.wait(); !failure.empty()) {
        throw InputError(failure);
    }
}

ObjectReader::ObjectReader(const std::string& repository) : git_(repository, {"cat-file", "--batch"}) {}

std::string ObjectReader::read(const std::string& object, uint64_t max_bytes)
{
    const std::optional<std::string> header = git_.send(object + "\n") ? git_.read_to('\n') : std::nullopt;
    if (!header) {
        throw InputError("it cannot be read: " + git_.wait());
    }
    // "1f7a7a472abf3dd9643fd615f6da379c4acb3e3a blob 1234", or "... missing"
    const std::size_t last = header->rfind(' ');
    uint64_t bytes = 0;
    const char* const end = header->data() + header->size();
    if (last == std::string::npos || std::from_chars(header->data() + last + 1, end, bytes).ptr != end) {
        throw InputError("it cannot be read: the repository does not have it any more");
    }
    if (bytes > max_bytes) {
        skip(bytes);
        throw TooManyBytes(bytes, max_bytes);
    }
    std::optional<std::string> content = git_.read_bytes(bytes);
    if (!content || !git_.read_bytes(1)) {
        throw InputError("it cannot be read: " + git_.wait());
    }
    return *std::move(content);
}

// An object's bytes, and the line end behind them.
void ObjectReader::skip(uint64_t bytes)
{
    constexpr uint64_t kPiece = 1 << 16;
    for (uint64_t left = bytes + 1; left > 0;) {
        const uint64_t piece = std::min(left, kPiece);
        if (!git_.read_bytes(piece)) {
            return;
        }
        left -= piece;
    }
}

}  // namespace bgp_rehearse
