// gzip's data through zlib, for libarchive does not check its checksums, and all else through libarchive.
#include "fleet/plan/archive.h"

#include <archive.h>
#include <archive_entry.h>
#include <locale.h>
#include <clocale>

#include <array>
#include <cerrno>
#include <exception>
#include <new>
#include <string_view>
#include <utility>

#include "xml/load_errors.h"
#include "xml/unpacked.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::xml::PeekedSource;
using bgp_platform::xml::Source;

// libarchive gives names in the locale's characters, and loses those that this does not have.
class Utf8Names {
public:
    Utf8Names() : locale_(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)), before_(uselocale(locale_)) {}
    ~Utf8Names()
    {
        uselocale(before_);
        if (locale_ != nullptr) {
            freelocale(locale_);
        }
    }
    Utf8Names(const Utf8Names&) = delete;
    Utf8Names& operator=(const Utf8Names&) = delete;

private:
    locale_t locale_;
    locale_t before_;
};

ArchiveEntry::Kind kind_of(archive_entry* entry)
{
    if (archive_entry_hardlink(entry) != nullptr) {
        return ArchiveEntry::Kind::Link;
    }
    switch (archive_entry_filetype(entry)) {
        case AE_IFREG:
            return ArchiveEntry::Kind::File;
        case AE_IFDIR:
            return ArchiveEntry::Kind::Folder;
        case AE_IFLNK:
            return ArchiveEntry::Kind::Link;
        default:
            return ArchiveEntry::Kind::Special;
    }
}

std::string name_of(archive_entry* entry)
{
    const char* name = archive_entry_pathname(entry);
    if (name == nullptr) {
        name = archive_entry_pathname_utf8(entry);
    }
    return name == nullptr ? std::string() : name;
}

// Those that libarchive has in itself; for others it would start programs. At an offset there is a tar archive.
void support(archive* reader, bool at_offset)
{
    using Support = int (*)(archive*);
    constexpr std::array<Support, 12> kSupported = {
        archive_read_support_filter_bzip2, archive_read_support_filter_compress, archive_read_support_filter_lz4,
        archive_read_support_filter_lzip,  archive_read_support_filter_lzma,     archive_read_support_filter_xz,
        archive_read_support_filter_zstd,  archive_read_support_format_cpio,     archive_read_support_format_empty,
        archive_read_support_format_raw,   archive_read_support_format_zip,      archive_read_support_format_tar};
    for (const Support each : kSupported) {
        if (!at_offset || each == archive_read_support_format_tar) {
            each(reader);
        }
    }
}

}  // namespace

struct ArchiveReader::Stream {
    struct Freed {
        void operator()(archive* each) const noexcept { archive_read_free(each); }
    };

    explicit Stream(std::unique_ptr<PeekedSource> packed) : source(std::move(packed)), reader(archive_read_new())
    {
        if (!reader) {
            throw std::bad_alloc();
        }
    }

    static la_ssize_t more(archive* reader, void* stream, const void** piece)
    {
        auto& me = *static_cast<Stream*>(stream);
        *piece = me.piece.data();
        try {
            return static_cast<la_ssize_t>(me.source->read(me.piece.data(), me.piece.size()));
        } catch (...) {
            me.failure = std::current_exception();
            archive_set_error(reader, EIO, "not read");
            return ARCHIVE_FATAL;
        }
    }

    // The result of a call of libarchive. Throws InputError for one that says that it failed.
    template <typename Result>
    Result check(Result result, Result worst = ARCHIVE_WARN)
    {
        if (failure) {
            rethrow();
        }
        if (result < worst) {
            const char* const why = archive_error_string(reader.get());
            throw InputError(std::string("the archive is damaged: ") + (why != nullptr ? why : "no reason is given"));
        }
        return result;
    }

    [[noreturn]] void rethrow() const
    {
        try {
            std::rethrow_exception(failure);
        } catch (const bgp_platform::xml::LoadError& error) {
            throw InputError(error.what());
        }
    }

    std::unique_ptr<PeekedSource> source;
    std::unique_ptr<archive, Freed> reader;
    archive_entry* entry = nullptr;
    std::exception_ptr failure;
    std::array<char, 1 << 16> piece;
};

ArchiveReader::ArchiveReader(const std::string& path, std::optional<uint64_t> offset)
{
    static const std::string kName = "the archive";
    auto source = std::make_unique<PeekedSource>(std::make_unique<StoredFileSource>(path, offset.value_or(0)));
    if (!offset && bgp_platform::xml::is_gzip(source->head())) {
        try {
            source = std::make_unique<PeekedSource>(bgp_platform::xml::gunzipped(std::move(source), kName));
        } catch (const bgp_platform::xml::LoadError& error) {
            throw InputError(error.what());
        }
        gzip_ = true;
    }
    stream_ = std::make_unique<Stream>(std::move(source));
    archive* const reader = stream_->reader.get();
    support(reader, offset.has_value());
    stream_->check(archive_read_open(reader, stream_.get(), nullptr, Stream::more, nullptr));
    ended_ = next_header() == ARCHIVE_EOF;
    const int format = archive_format(reader);
    has_entries_ = format != ARCHIVE_FORMAT_RAW && format != ARCHIVE_FORMAT_EMPTY;
    has_offsets_ =
        !gzip_ && archive_filter_count(reader) == 1 && (format & ARCHIVE_FORMAT_BASE_MASK) == ARCHIVE_FORMAT_TAR;
    start_ = offset.value_or(0);
}

ArchiveReader::~ArchiveReader() = default;

int ArchiveReader::next_header()
{
    const Utf8Names locale;
    return stream_->check(archive_read_next_header(stream_->reader.get(), &stream_->entry));
}

std::optional<ArchiveEntry> ArchiveReader::next()
{
    if (!std::exchange(peeked_, false) && !ended_) {
        ended_ = next_header() == ARCHIVE_EOF;
        ++index_;
    }
    if (ended_) {
        return std::nullopt;
    }
    const Utf8Names locale;
    ArchiveEntry entry;
    entry.index = index_;
    entry.name = name_of(stream_->entry);
    entry.kind = kind_of(stream_->entry);
    if (has_offsets_) {
        entry.offset = start_ + static_cast<uint64_t>(archive_read_header_position(stream_->reader.get()));
    }
    return entry;
}

void ArchiveReader::read(uint64_t max_bytes, const TakePiece& take)
{
    const bool known = archive_entry_size_is_set(stream_->entry) != 0;
    const uint64_t said = known ? static_cast<uint64_t>(archive_entry_size(stream_->entry)) : 0;
    if (said > max_bytes) {
        throw TooManyBytes(said, max_bytes);
    }
    std::array<char, 1 << 16> piece;
    uint64_t bytes = 0;
    la_ssize_t size = 0;
    while ((size = stream_->check<la_ssize_t>(archive_read_data(stream_->reader.get(), piece.data(), piece.size()),
                                              ARCHIVE_OK)) > 0) {
        bytes += static_cast<uint64_t>(size);
        if (bytes > max_bytes) {
            throw TooManyBytes(bytes, max_bytes);
        }
        take({piece.data(), static_cast<std::size_t>(size)});
    }
}

}  // namespace bgp_rehearse
