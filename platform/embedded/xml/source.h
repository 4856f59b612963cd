// Where a configuration's bytes come from.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace bgp_platform::xml {

class Source {
public:
    Source() = default;
    virtual ~Source() = default;
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    // Up to so many bytes; 0 at the end. Throws LoadError, naming the source.
    virtual std::size_t read(char* buffer, std::size_t size) = 0;
};

class TextSource : public Source {
public:
    explicit TextSource(std::string_view text) : rest_(text) {}

    std::size_t read(char* buffer, std::size_t size) override
    {
        const std::size_t count = rest_.copy(buffer, size);
        rest_.remove_prefix(count);
        return count;
    }

private:
    std::string_view rest_;
};

// A source whose beginning can be looked at before it is read.
class PeekedSource : public Source {
public:
    static constexpr std::size_t kHead = 4096;

    explicit PeekedSource(std::unique_ptr<Source> source) : source_(std::move(source)), head_(kHead, '\0')
    {
        std::size_t size = 0;
        for (std::size_t count = 1; count > 0 && size < kHead; size += count) {
            count = source_->read(&head_[size], kHead - size);
        }
        head_.resize(size);
    }

    // Its first bytes: all of them where there are less than kHead.
    std::string_view head() const noexcept { return head_; }

    std::size_t read(char* buffer, std::size_t size) override
    {
        if (taken_ == head_.size()) {
            return head_.size() < kHead ? 0 : source_->read(buffer, size);
        }
        const std::size_t count = head_.copy(buffer, size, taken_);
        taken_ += count;
        return count;
    }

private:
    std::unique_ptr<Source> source_;
    std::string head_;
    std::size_t taken_ = 0;
};

}  // namespace bgp_platform::xml
