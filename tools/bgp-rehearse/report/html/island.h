// Data in a page for its script: JSON lines, compressed by gzip and written in base64 as they come, in an element of their
// own. Nothing in it can end the element or be taken for markup.
#pragma once

#include <zlib.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "report/html/markup.h"

namespace bgp_rehearse {

class Island {
public:
    // Opens the element of that id. The page outlives it.
    Island(std::string_view id, Markup* page);
    ~Island();
    Island(const Island&) = delete;
    Island& operator=(const Island&) = delete;

    void add(std::string_view text);
    std::size_t size() const noexcept { return size_; }  // of the text so far

    // Closes the element.
    void finish();

private:
    void deflate_all(int flush);
    void put(std::string_view bytes);

    Markup& page_;
    z_stream stream_{};
    std::size_t size_ = 0;
    std::string pending_;  // compressed bytes that are no whole group of base64 yet
};

}  // namespace bgp_rehearse
