#include "run/again.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>

#include "base/output_file.h"
#include "base/text_escape.h"
#include "judge/row_changes.h"
#include "report/model.h"
#include "run/memory_limit.h"
#include "store/changes.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::Device;
using bgp_platform::schema::Node;

constexpr char kReturned = '\0';  // comes before the lines

// Sends the keypath of each row that differs, a line for each.
class ChangedRows : public RowVisitor {
public:
    explicit ChangedRows(int channel) : channel_(channel) {}

    void kept(const Node& /*list*/, std::size_t /*rows*/) override {}
    void row(const RowChange& change) override
    {
        if (change.fate != Fate::AsItWas) {
            send(bgp_platform::store::keypath(*change.around, &change.row()));
        }
    }
    void outside(const RowChange& change) override
    {
        for_each_leaf_change(change, [this](const LeafChange& leaf) { send(leaf.node->path()); });
    }

private:
    void send(const std::string& path)
    {
        const std::string line = escaped_line(path) + "\n";
        all_sent_ = all_sent_ && write_all(channel_, line.data(), line.size());
    }

    int channel_;
    bool all_sent_ = true;
};

[[noreturn]] void run_second(const UpgradeLibrary& library, Device& device, const UpgradeLimits& limits,
                             const Watch& watch, int channel)
{
    device.log_sink = {};
    device.fault_sink = {};
    device.recorder().after_failure = {};
    device.keep_reports(false);
    device.watch(nullptr);
    device.commit();
    const bgp_platform::UpgradeHandles upgrade = device.open_upgrade();
    {
        const MemoryLimit memory(limits.memory, watch);
        library.update(upgrade.maapi_socket, upgrade.thandle, upgrade.cdb_socket);
    }
    static_cast<void>(write_all(channel, &kReturned, 1));
    ChangedRows changed(channel);
    walk_rows(device, changed);
    std::_Exit(EXIT_SUCCESS);
}

// What comes until the other end is closed. False: the upgrade had not returned in time.
bool read_all(int channel, const std::optional<Duration>& limit, std::string* text)
{
    const auto began = std::chrono::steady_clock::now();
    pollfd source{channel, POLLIN, 0};
    char piece[65536];
    for (;;) {
        const bool timed = text->empty() && limit;
        const Duration left = timed ? *limit - (std::chrono::steady_clock::now() - began) : Duration{};
        if (timed && left <= Duration{}) {
            return false;
        }
        const auto longest = std::chrono::ceil<std::chrono::milliseconds>(left);
        const int ready = poll(&source, 1, timed ? static_cast<int>(longest.count()) : -1);
        const ssize_t size = ready > 0 ? read(channel, piece, sizeof piece) : -1;
        if (size > 0) {
            text->append(piece, static_cast<std::size_t>(size));
        } else if (size == 0 || (ready < 0 && errno != EINTR)) {
            return true;
        }
    }
}

std::vector<std::string> lines_of(const std::string& text)
{
    std::vector<std::string> lines;
    for (std::size_t start = text.find(kReturned) + 1, end = 0; (end = text.find('\n', start)) != std::string::npos;
         start = end + 1) {
        lines.push_back(text.substr(start, end - start));
    }
    return lines;
}

// How the process ended; empty where its upgrade returned.
std::string words_of_end(int status, bool in_time, const UpgradeLimits& limits, const Watch& watch)
{
    if (watch.out_of_memory() && limits.memory) {
        return fmt::format("the memory limit of {} (--memory-limit)", words_of_memory_limit(*limits.memory));
    }
    if (!in_time) {
        return fmt::format("the time limit of {} (--time-limit)", words_of_time_limit(*limits.time));
    }
    if (status == 0) {
        return {};
    }
    return WIFSIGNALED(status) ? signal_name(WTERMSIG(status))
                               : fmt::format("an exit with status {}", WEXITSTATUS(status));
}

}  // namespace

Again upgrade_again(const UpgradeLibrary& library, Device& device, const UpgradeLimits& limits, const Watch& watch)
{
    int channel[2];
    if (pipe(channel) != 0) {
        return {fmt::format("no process for it: {}", std::strerror(errno)), {}};
    }
    const pid_t child = fork();
    if (child == 0) {
        close(channel[0]);
        run_second(library, device, limits, watch, channel[1]);
    }
    close(channel[1]);
    if (child < 0) {
        close(channel[0]);
        return {"no process for it", {}};
    }
    std::string text;
    const bool in_time = read_all(channel[0], limits.time, &text);
    close(channel[0]);
    if (!in_time) {
        kill(child, SIGKILL);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return {words_of_end(status, in_time, limits, watch), lines_of(text)};
}

}  // namespace bgp_rehearse
