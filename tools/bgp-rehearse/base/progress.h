// A line on the terminal that says how far a long piece of work is.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace bgp_rehearse {

// Shows nothing in the first second, and nothing at all when standard error is not a terminal. The line is taken away
// when the work, and with it this object, ends.
class ProgressLine {
public:
    ProgressLine() : ProgressLine(std::string()) {}
    explicit ProgressLine(std::string what);
    ~ProgressLine() { clear(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    // So many bytes of the total are done; total 0: not known.
    void show(std::size_t bytes, std::size_t total);

    // What `text` makes, which is asked for only when it is shown.
    template <typename Text>
    void show(Text&& text)
    {
        if (due()) {
            put(text());
        }
    }

    void clear();

private:
    bool due();
    void put(std::string_view line);

    std::string what_;
    bool terminal_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point next_;
};

}  // namespace bgp_rehearse
