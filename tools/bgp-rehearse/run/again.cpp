#include "run/again.h"

#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "base/output_file.h"
#include "base/text_escape.h"
#include "judge/row_changes.h"
#include "report/model.h"
#include "store/changes.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::Device;
using bgp_platform::schema::Node;

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

[[noreturn]] void run_second(const UpgradeLibrary& library, Device& device, int channel)
{
    device.log_sink = {};
    device.fault_sink = {};
    device.recorder().after_failure = {};
    device.keep_reports(false);
    device.commit();
    const bgp_platform::UpgradeHandles upgrade = device.open_upgrade();
    library.update(upgrade.maapi_socket, upgrade.thandle, upgrade.cdb_socket);
    ChangedRows changed(channel);
    walk_rows(device, changed);
    std::_Exit(EXIT_SUCCESS);
}

std::vector<std::string> read_lines(int channel)
{
    std::string text;
    char piece[65536];
    for (ssize_t size; (size = read(channel, piece, sizeof piece)) != 0;) {
        if (size > 0) {
            text.append(piece, static_cast<std::size_t>(size));
        } else if (errno != EINTR) {
            break;
        }
    }
    std::vector<std::string> lines;
    for (std::size_t start = 0, end = 0; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
        lines.push_back(text.substr(start, end - start));
    }
    return lines;
}

}  // namespace

Again upgrade_again(const UpgradeLibrary& library, Device& device)
{
    int channel[2];
    if (pipe(channel) != 0) {
        return {fmt::format("no process for it: {}", std::strerror(errno)), {}};
    }
    const pid_t child = fork();
    if (child == 0) {
        close(channel[0]);
        run_second(library, device, channel[1]);
    }
    close(channel[1]);
    Again again;
    again.changes = read_lines(channel[0]);
    close(channel[0]);
    int status = 0;
    if (child < 0) {
        again.ended = "no process for it";
    } else if (waitpid(child, &status, 0) == child && status != 0) {
        again.ended = WIFSIGNALED(status) ? signal_name(WTERMSIG(status))
                                          : fmt::format("an exit with status {}", WEXITSTATUS(status));
    }
    return again;
}

}  // namespace bgp_rehearse
