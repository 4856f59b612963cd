// A process that does one piece of a sweep and tells the result as text through a pipe.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

namespace bgp_rehearse {

class SweepProcess {
public:
    // Forks; the child runs `work` with the pipe's end to write to, and exits with its result. It ends with its
    // parent. Throws CommandError when no process can be made.
    explicit SweepProcess(const std::function<int(int channel)>& work);

    struct End {
        std::string text;  // all that came through the pipe
        int status = 0;    // as waitpid() gives it
    };

    // Once. `on_tick`, if given, is called a few times a second as long as nothing comes.
    End wait(const std::function<void()>& on_tick = {});

private:
    pid_t process_;
    int channel_;
};

}  // namespace bgp_rehearse
