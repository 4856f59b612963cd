#include "report/html/island.h"

#include <new>

#include "base/base64.h"

namespace bgp_rehearse {

namespace {

constexpr int kLevel = 4;              // twice as fast as zlib's usual one, and a tenth larger
constexpr int kGzip = 16 + MAX_WBITS;  // with gzip's head, in which zlib tells no time
constexpr int kMemory = 8;
constexpr std::size_t kGroup = 3;  // of bytes, in base64
constexpr std::size_t kPacked = 1 << 15;

}  // namespace

Island::Island(std::string_view id, Markup* page) : page_(*page)
{
    if (deflateInit2(&stream_, kLevel, Z_DEFLATED, kGzip, kMemory, Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::bad_alloc();
    }
    page_.open("script", {{"type", "application/gzip"}, {"id", id}});
}

Island::~Island()
{
    deflateEnd(&stream_);
}

void Island::add(std::string_view text)
{
    size_ += text.size();
    stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream_.avail_in = static_cast<uInt>(text.size());
    deflate_all(Z_NO_FLUSH);
}

void Island::finish()
{
    stream_.avail_in = 0;
    deflate_all(Z_FINISH);
    page_.raw(base64_of(pending_)).close();
    pending_.clear();
}

void Island::deflate_all(int flush)
{
    char piece[kPacked];
    do {
        stream_.next_out = reinterpret_cast<Bytef*>(piece);
        stream_.avail_out = sizeof piece;
        deflate(&stream_, flush);
        put({piece, sizeof piece - stream_.avail_out});
    } while (stream_.avail_out == 0);
}

void Island::put(std::string_view bytes)
{
    pending_ += bytes;
    const std::size_t whole = pending_.size() / kGroup * kGroup;
    page_.raw(base64_of(std::string_view(pending_).substr(0, whole)));
    pending_.erase(0, whole);
}

}  // namespace bgp_rehearse
