#include "fleet/shard/part.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

namespace bgp_rehearse {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kFormat = 2;
constexpr std::size_t kPiece = 1 << 18;  // that is written at once

std::string header_line(const PartHeader& header)
{
    return Json{{"part", kFormat},
                {"plan", header.plan},
                {"shard", header.shard},
                {"shards", header.shards},
                {"inputs", header.inputs}}
        .dump();
}

PartHeader header_of(std::string_view line)
{
    const Json json = Json::parse(line, nullptr, false);
    try {
        if (const int format = json.at("part").get<int>(); format != kFormat) {
            throw PartError(fmt::format("this is a part of format {}; this command knows {}", format, kFormat));
        }
        return {json.at("plan").get<std::string>(), json.at("shard").get<std::size_t>(),
                json.at("shards").get<std::size_t>(), json.at("inputs").get<std::size_t>()};
    } catch (const Json::exception&) {
        throw PartError("this is no part of a fleet");
    }
}

struct Closed {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Closed>;

File opened(const std::string& name)
{
    File file(std::fopen(name.c_str(), "re"));
    if (!file) {
        throw PartError(std::strerror(errno));
    }
    return file;
}

// Lines of a file, without their line ends.
class Lines {
public:
    explicit Lines(const std::string& name) : file_(opened(name)) {}
    ~Lines() { std::free(line_); }  // NOLINT: getline() allocates it
    Lines(const Lines&) = delete;
    Lines& operator=(const Lines&) = delete;

    // False: there is no further whole line.
    bool next()
    {
        begin_ += size_ + 1;
        const ssize_t size = getline(&line_, &room_, file_.get());
        if (size < 0 && std::ferror(file_.get()) != 0) {
            throw PartError(std::strerror(errno));
        }
        if (size <= 0 || line_[size - 1] != '\n') {
            return false;
        }
        begin_ = first_ ? 0 : begin_;
        first_ = false;
        size_ = static_cast<std::size_t>(size) - 1;
        return true;
    }
    std::string_view line() const noexcept { return {line_, size_}; }
    std::string_view with_line_end() const noexcept { return {line_, size_ + 1}; }
    uint64_t begin() const noexcept { return begin_; }

private:
    File file_;
    char* line_ = nullptr;
    std::size_t room_ = 0;
    std::size_t size_ = 0;
    uint64_t begin_ = 0;
    bool first_ = true;
};

// Whether the line ends a part of so many results and these bytes; none where it is no last line.
std::optional<bool> closes(std::string_view line, std::size_t results, Sha256* before)
{
    constexpr std::string_view kStart = "{\"results\":";
    if (line.substr(0, kStart.size()) != kStart) {
        return std::nullopt;
    }
    const Json json = Json::parse(line, nullptr, false);
    return json.is_object() && json.value("results", std::size_t{0}) == results &&
           json.value("sha256", std::string()) == before->hex();
}

}  // namespace

PartWriter::PartWriter(const std::string& option, const std::string& file, const PartHeader& header)
    : file_(option, replaceable_file(option, file))
{
    put(header_line(header));
}

void PartWriter::add(std::string_view line)
{
    put(line);
    ++results_;
}

void PartWriter::put(std::string_view line)
{
    pending_.append(line).append("\n");
    if (pending_.size() >= kPiece) {
        write();
    }
}

void PartWriter::write()
{
    sha256_.add(pending_);
    file_.write(pending_);
    pending_.clear();
}

void PartWriter::finish()
{
    write();
    put(Json{{"results", results_}, {"sha256", sha256_.hex()}}.dump());
    write();
    file_.put_in_place();
}

PartReader::PartReader(std::string file) : file_(std::move(file))
{
    Lines lines(file_);
    if (!lines.next()) {
        throw PartError("this is no part of a fleet");
    }
    header_ = header_of(lines.line());
}

void PartReader::each(const std::function<void(std::string_view line, uint64_t offset)>& take) const
{
    Lines lines(file_);
    Sha256 sha256;
    lines.next();
    sha256.add(lines.with_line_end());
    std::size_t results = 0;
    while (lines.next()) {
        if (const std::optional<bool> whole = closes(lines.line(), results, &sha256)) {
            if (!*whole || results != header_.inputs || lines.next()) {
                break;
            }
            return;
        }
        take(lines.line(), lines.begin());
        sha256.add(lines.with_line_end());
        ++results;
    }
    throw PartError("the part is cut off, or has been changed");
}

}  // namespace bgp_rehearse
