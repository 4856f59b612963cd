#include "fleet/run/crew.h"

#include <fmt/format.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <exception>

#include "base/exit_status.h"
#include "report/model.h"

namespace bgp_rehearse {

void Crew::count(const std::string& line) const
{
    ++shared_->done;
    // Quotes within a text of the line stand behind a backslash.
    shared_->stops += line.find(R"("verdict":"STOP")") != std::string::npos ? 1 : 0;
}

CrewCounts Crew::counts() const
{
    return {shared_->done, shared_->stops};
}

void Crew::note(int status, const std::string& text) const
{
    if (!shared_->failed.exchange(true)) {
        shared_->status = status;
        text.copy(shared_->text, sizeof shared_->text - 1);
    }
}

int Crew::be_member(const std::vector<std::size_t>& shards, const MakeMember& make_member) const
{
    try {
        const InterruptGuard interrupts;
        const std::unique_ptr<Member> member = make_member(interrupts);
        for (std::size_t next; (next = shared_->next++) < shards.size();) {
            member->work(shards[next]);
        }
        return EXIT_SUCCESS;
    } catch (const CommandError& error) {
        note(static_cast<int>(error.status()), error.what());
    } catch (const Interrupted& interrupted) {
        std::raise(interrupted.signal);
    } catch (const std::exception& error) {
        note(static_cast<int>(ExitStatus::OwnFault), error.what());
    }
    return EXIT_FAILURE;
}

void Crew::work(const InterruptGuard& interrupts, const std::vector<std::size_t>& shards, std::size_t jobs,
                const MakeMember& make_member, const std::function<void()>& on_tick) const
{
    const ChildEnd end = run_children(
        interrupts, std::min(jobs, shards.size()), [&] { return be_member(shards, make_member); }, on_tick);
    if (end.interrupted_by != 0) {
        throw Interrupted{end.interrupted_by};
    }
    if (shared_->failed) {
        throw CommandError(static_cast<ExitStatus>(shared_->status), shared_->text);
    }
    if (end.signal != 0 || end.status != 0) {
        const std::string how = end.signal != 0 ? signal_name(end.signal) : fmt::format("status {}", end.status);
        throw CommandError(ExitStatus::OwnFault,
                           fmt::format("a worker ended with {}; what was done is kept: run the same again", how));
    }
}

}  // namespace bgp_rehearse
