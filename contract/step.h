// The words in which contract/steps/ says what is promised of a step: the lines by which a reader of the upgrade log
// tells how it went, and what it does when one of its calls fails. What is promised has to be said whole: everything
// here is made by constructors that leave nothing out, so that a step or a call site that lacks something does not
// compile.
#pragma once

#include <cstddef>
#include <initializer_list>

namespace bgp_contract {

// A few texts in an order, known when the program is compiled.
class Texts {
public:
    static constexpr std::size_t kMost = 8;

    constexpr Texts() = default;
    constexpr Texts(std::initializer_list<const char*> texts)
    {
        for (const char* const text : texts) {
            texts_[count_++] = text;
        }
    }

    constexpr Texts with(const char* text) const
    {
        Texts more = *this;
        more.texts_[more.count_++] = text;
        return more;
    }

    constexpr const char* const* begin() const { return texts_; }
    constexpr const char* const* end() const { return texts_ + count_; }

private:
    const char* texts_[kMost] = {};
    std::size_t count_ = 0;
};

enum class Must {
    GoOn,    // without a line of its own: the failure does not matter, or shows in what follows
    Log,     // the log says so before the next call, in a line that begins with `text`; then it goes on
    Fault,   // the process ends with a fault report by the function `text`
    Assert,  // the process ends with a failed assertion in a function whose signature has `text`
};

// What must happen when a call fails, and what may. Made by the four functions below.
struct Demand {
    Must must;
    const char* text;
    const char* source;     // of a fault or an assertion
    unsigned int lines[2];  // of a fault, one of these; 0: none is promised
    Texts writes;           // beginnings of keypaths: what a run without the failure would not write there

    // The same, and these writes are explained: what was to be read, or to be written and read again, is lost.
    constexpr Demand explaining(const Texts& keypaths) const
    {
        return {must, text, source, {lines[0], lines[1]}, keypaths};
    }
};

constexpr Demand goes_on()
{
    return {Must::GoOn, "", "", {0, 0}, {}};
}

constexpr Demand logs(const char* beginning)
{
    return {Must::Log, beginning, "", {0, 0}, {}};
}

constexpr Demand faults(const char* function, const char* source, unsigned int line = 0, unsigned int other_line = 0)
{
    return {Must::Fault, function, source, {line, other_line}, {}};
}

constexpr Demand asserts(const char* signature, const char* source)
{
    return {Must::Assert, signature, source, {0, 0}, {}};
}

// A place in a step that makes a call of the C API. Reads whose failure counts as "not there" have no line of their own.
struct CallSite {
    constexpr CallSite(const char* api_function, const char* path_without_keys, const Demand& when_it_fails)
        : function(api_function), path(path_without_keys), demand(when_it_fails)
    {
    }

    const char* function;  // "maapi_create"
    const char* path;      // "/router/bgp{}/vrf{}"; empty where the call names none
    Demand demand;
};

// All call sites of a step: those of an array that stays.
class CallSites {
public:
    template <std::size_t count>
    constexpr CallSites(const CallSite (&sites)[count])
        : begin_(sites), end_(sites + count)
    {
    }

    constexpr const CallSite* begin() const { return begin_; }
    constexpr const CallSite* end() const { return end_; }

private:
    const CallSite* begin_;
    const CallSite* end_;
};

// The lines of a step, beginnings of log lines that are long enough to tell them from all others.
struct FirstLine {  // before its first call
    const char* text;
};
struct LastLine {  // behind its last call
    const char* text;
};
struct NothingToDo : Texts {  // its last lines when it had nothing to do
    using Texts::Texts;
};
struct Failed : Texts {  // its last lines when it gave up
    using Texts::Texts;
};
struct PassedOver : Texts {  // update()'s own lines when the step does not run
    using Texts::Texts;
};
struct Condition {  // why it did not run when update() writes no line about it
    const char* text;
};

struct Step {
    constexpr Step(const char* function, FirstLine first, LastLine last, const NothingToDo& nothing,
                   const Failed& gave_up, const PassedOver& not_run, Condition unsaid, CallSites sites)
        : name(function),
          first_line(first.text),
          last_line(last.text),
          nothing_to_do(nothing),
          failed(gave_up),
          passed_over(not_run),
          condition(unsaid.text),
          calls(sites)
    {
    }

    const char* name;  // of its function
    const char* first_line;
    const char* last_line;
    Texts nothing_to_do;
    Texts failed;
    Texts passed_over;
    const char* condition;
    CallSites calls;
};

// What update() says when the stored configuration has no BGP router entity, or several.
inline constexpr char kNotOneEntity[] = "No need to update others config\n";

// The condition of a step that runs, or is passed over with a line.
inline constexpr char kStepMissing[] = "the log does not tell of it";

}  // namespace bgp_contract
