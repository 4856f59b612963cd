// gzip's data through zlib, for libarchive does not check its checksums, and all else through libarchive.
#include "xml/unpacked.h"

#include <archive.h>
#include <archive_entry.h>
#include <zlib.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <exception>
#include <new>
#include <utility>

#include "xml/load_errors.h"

namespace bgp_platform::xml {

namespace {

using Piece = std::array<char, 1 << 16>;

// By what each program's data begins with.
std::string kind_of(std::string_view head)
{
    using namespace std::string_view_literals;
    constexpr std::array<std::pair<std::string_view, const char*>, 5> kKinds = {{{"BZh"sv, "bzip2 "},
                                                                                 {"\xFD"
                                                                                  "7zXZ"sv,
                                                                                  "xz "},
                                                                                 {"\x28\xB5\x2F\xFD"sv, "zstd "},
                                                                                 {"\x04\x22\x4D\x18"sv, "lz4 "},
                                                                                 {"LZIP"sv, "lzip "}}};
    for (const auto& [beginning, kind] : kKinds) {
        if (head.substr(0, beginning.size()) == beginning) {
            return kind;
        }
    }
    return "compressed ";
}

[[noreturn]] void refuse(const std::string& name, const std::string& what)
{
    throw LoadError(name + ": " + what);
}

class GunzippedSource : public Source {
public:
    GunzippedSource(std::unique_ptr<Source> packed, const std::string& name) : packed_(std::move(packed)), name_(name)
    {
        constexpr int kGzipOnly = 16;
        if (inflateInit2(&stream_, MAX_WBITS + kGzipOnly) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    ~GunzippedSource() override { inflateEnd(&stream_); }

    std::size_t read(char* buffer, std::size_t size) override
    {
        stream_.next_out = reinterpret_cast<Bytef*>(buffer);
        stream_.avail_out = static_cast<uInt>(size);
        while (stream_.avail_out == size && refill()) {
            advance();
        }
        return size - stream_.avail_out;
    }

private:
    // False at the end: behind a member, where no other follows.
    bool refill()
    {
        if (stream_.avail_in == 0) {
            stream_.next_in = reinterpret_cast<Bytef*>(piece_.data());
            stream_.avail_in = static_cast<uInt>(packed_->read(piece_.data(), piece_.size()));
        }
        if (stream_.avail_in == 0 && !member_ended_) {
            refuse(name_, "gzip data ends early");
        }
        // What is no other member is padding, as of a tape's blocks.
        return stream_.avail_in > 0 && !(member_ended_ && *stream_.next_in != kFirstByte);
    }

    void advance()
    {
        member_ended_ = false;
        const int result = inflate(&stream_, Z_NO_FLUSH);
        if (result == Z_STREAM_END) {
            member_ended_ = true;
            inflateReset(&stream_);
        } else if (result == Z_MEM_ERROR) {
            throw std::bad_alloc();
        } else if (result != Z_OK) {
            refuse(name_, std::string("gzip data is damaged: ") +
                              (stream_.msg != nullptr ? stream_.msg : "no reason is given"));
        }
    }

    static constexpr Bytef kFirstByte = 0x1F;

    std::unique_ptr<Source> packed_;
    const std::string& name_;
    z_stream stream_{};
    Piece piece_;
    bool member_ended_ = false;
};

struct ArchiveDeleter {
    void operator()(archive* reader) const noexcept { archive_read_free(reader); }
};

class UnpackedSource : public Source {
public:
    UnpackedSource(std::unique_ptr<PeekedSource> packed, const std::string& name)
        : packed_(std::move(packed)), name_(name), kind_(kind_of(packed_->head())), reader_(archive_read_new())
    {
        if (!reader_) {
            throw std::bad_alloc();
        }
        support();
        archive_entry* entry = nullptr;
        check(archive_read_open(reader_.get(), this, nullptr, more, nullptr));
        const int found = check(archive_read_next_header(reader_.get(), &entry));
        const int format = archive_format(reader_.get());
        ended_ = found == ARCHIVE_EOF;
        if (format != ARCHIVE_FORMAT_RAW && format != ARCHIVE_FORMAT_EMPTY) {
            refuse_archive(entry);
        }
    }

    std::size_t read(char* buffer, std::size_t size) override
    {
        if (ended_) {
            return 0;
        }
        return static_cast<std::size_t>(check(archive_read_data(reader_.get(), buffer, size)));
    }

private:
    // Those that libarchive has in itself; for others it would start programs.
    void support()
    {
        using Support = int (*)(archive*);
        constexpr std::array<Support, 13> kSupported = {
            archive_read_support_filter_bzip2, archive_read_support_filter_compress, archive_read_support_filter_gzip,
            archive_read_support_filter_lz4,   archive_read_support_filter_lzip,     archive_read_support_filter_lzma,
            archive_read_support_filter_xz,    archive_read_support_filter_zstd,     archive_read_support_format_cpio,
            archive_read_support_format_empty, archive_read_support_format_raw,      archive_read_support_format_tar,
            archive_read_support_format_zip};
        for (const Support each : kSupported) {
            each(reader_.get());
        }
    }

    static la_ssize_t more(archive* reader, void* source, const void** piece)
    {
        auto& me = *static_cast<UnpackedSource*>(source);
        *piece = me.piece_.data();
        try {
            return static_cast<la_ssize_t>(me.packed_->read(me.piece_.data(), me.piece_.size()));
        } catch (...) {
            me.failure_ = std::current_exception();
            archive_set_error(reader, EIO, "not read");
            return ARCHIVE_FATAL;
        }
    }

    template <typename Result>
    Result check(Result result)
    {
        if (failure_) {
            std::rethrow_exception(failure_);
        }
        if (result < ARCHIVE_WARN) {
            refuse_data();
        }
        return result < 0 ? 0 : result;
    }

    [[noreturn]] void refuse_data()
    {
        const char* const text = archive_error_string(reader_.get());
        const std::string why = text != nullptr ? text : "no reason is given";
        const bool early = why.find("runcated") != std::string::npos || why.find("No progress") != std::string::npos;
        refuse(name_, kind_ + (early ? "data ends early" : "data is damaged: " + why));
    }

    [[noreturn]] void refuse_archive(archive_entry* entry)
    {
        constexpr std::size_t kMostCounted = 10000;
        std::size_t files = 0;
        for (bool more_files = !ended_; more_files && files < kMostCounted;) {
            files += archive_entry_filetype(entry) == AE_IFREG ? 1 : 0;
            more_files = archive_read_next_header(reader_.get(), &entry) == ARCHIVE_OK;
        }
        const std::string count = (files == kMostCounted ? "more than " : "") + std::to_string(files);
        refuse(name_, "this is an archive of " + count + (files == 1 ? " file" : " files") +
                          "; take the configuration out of it and name that file");
    }

    std::unique_ptr<PeekedSource> packed_;
    const std::string& name_;
    std::string kind_;
    std::unique_ptr<archive, ArchiveDeleter> reader_;
    std::exception_ptr failure_;
    bool ended_ = false;
    Piece piece_;
};

}  // namespace

bool is_gzip(std::string_view head)
{
    return head.substr(0, 2) == "\x1F\x8B";
}

std::unique_ptr<Source> gunzipped(std::unique_ptr<Source> packed, const std::string& name)
{
    return std::make_unique<GunzippedSource>(std::move(packed), name);
}

std::unique_ptr<Source> unpacked(std::unique_ptr<PeekedSource> packed, const std::string& name)
{
    return std::make_unique<UnpackedSource>(std::move(packed), name);
}

}  // namespace bgp_platform::xml
