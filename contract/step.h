// The words in which contract/steps/ says what is promised of a step: the lines by which a reader of the upgrade log
// tells how it went, what it does when one of its calls fails, and what that comes to for the router. What is promised
// has to be said whole: everything here is made by constructors that leave nothing out, so that a step or a call site
// that lacks something does not compile.
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

// What a failed call comes to for the router.
enum class Class {
    Expected,  // nothing: what it would have made is there already, or what it would have set or read is not there
    Left,      // a row stays behind, or without its counterpart
    Loses,     // a value is not set
    Stops,     // its step gives up, or a step does not run
};

// Which failures a meaning's first sentence is for; the second one is for all others.
enum class When {
    Always,
    WhereThere,    // the error is that the item already exists
    WhereMissing,  // the error is that the item does not exist
    SecondTry,     // the call before it at this site has failed too, and was its first try
};

// What it means when a call fails, in words that stand behind "2 writes failed: ", behind "9 writes failed as on every
// such router: " (Expected), behind what stayed (Left), or behind the step's title and " gave up: " (Stops).
struct Meaning {
    Class kind;
    When when;
    const char* sentence;
    Class other_kind;
    const char* other_sentence;

    friend constexpr Meaning left(const char* sentence);
    friend constexpr Meaning loses(const char* sentence);
    friend constexpr Meaning stops(const char* sentence);
    friend constexpr Meaning where_there(const Meaning& there, const Meaning& otherwise);
    friend constexpr Meaning where_missing(const Meaning& missing, const Meaning& otherwise);
    friend constexpr Meaning expected_where_there(const char* sentence, const Meaning& otherwise);
    friend constexpr Meaning expected_where_missing(const char* sentence, const Meaning& otherwise);
    friend constexpr Meaning expected_at_first_try(const char* sentence, const Meaning& at_the_second);

private:
    constexpr Meaning(Class always, const char* text)
        : kind(always), when(When::Always), sentence(text), other_kind(always), other_sentence(text)
    {
    }
    constexpr Meaning(When first, const Meaning& one, const Meaning& other)
        : kind(one.kind), when(first), sentence(one.sentence), other_kind(other.kind), other_sentence(other.sentence)
    {
    }
};

constexpr Meaning left(const char* sentence)
{
    return {Class::Left, sentence};
}

constexpr Meaning loses(const char* sentence)
{
    return {Class::Loses, sentence};
}

constexpr Meaning stops(const char* sentence)
{
    return {Class::Stops, sentence};
}

constexpr Meaning where_there(const Meaning& there, const Meaning& otherwise)
{
    return {When::WhereThere, there, otherwise};
}

constexpr Meaning where_missing(const Meaning& missing, const Meaning& otherwise)
{
    return {When::WhereMissing, missing, otherwise};
}

// No call is expected to fail whatever the error: only where a thing is there already, or is missing, or is looked for
// in a second place.
constexpr Meaning expected_where_there(const char* sentence, const Meaning& otherwise)
{
    return {When::WhereThere, {Class::Expected, sentence}, otherwise};
}

constexpr Meaning expected_where_missing(const char* sentence, const Meaning& otherwise)
{
    return {When::WhereMissing, {Class::Expected, sentence}, otherwise};
}

constexpr Meaning expected_at_first_try(const char* sentence, const Meaning& at_the_second)
{
    return {When::SecondTry, at_the_second, {Class::Expected, sentence}};
}

// A place in a step that makes a call of the C API. Reads whose failure counts as "not there" have no line of their own.
struct CallSite {
    constexpr CallSite(const char* api_function, const char* path_without_keys, const Demand& when_it_fails,
                       const Meaning& what_that_means)
        : function(api_function), path(path_without_keys), demand(when_it_fails), meaning(what_that_means)
    {
    }

    const char* function;  // "maapi_create"
    const char* path;      // "/router/bgp{}/vrf{}"; empty where the call names none
    Demand demand;
    Meaning meaning;
};

// All call sites of a step: those of an array that stays.
class CallSites {
public:
    template <std::size_t count>
    constexpr CallSites(const CallSite (&sites)[count]) : begin_(sites), end_(sites + count)
    {
    }

    constexpr const CallSite* begin() const { return begin_; }
    constexpr const CallSite* end() const { return end_; }

private:
    const CallSite* begin_;
    const CallSite* end_;
};

struct Title {  // of a step, in network words: "IPv6 unicast"
    const char* text;
};

// Rows that a step takes away on purpose: no other row may go.
struct MeantRemoval {
    const char* list;      // the path of their list, names alone
    const char* sentence;  // why they go, in network words
};

class Removes {
public:
    constexpr Removes() = default;
    constexpr Removes(const char* list, const char* sentence) : removal_{list, sentence}, count_(1) {}

    constexpr const MeantRemoval* begin() const { return &removal_; }
    constexpr const MeantRemoval* end() const { return &removal_ + count_; }

private:
    MeantRemoval removal_{};
    std::size_t count_ = 0;  // no step removes rows of two lists
};

// The lines of a step, beginnings of log lines that are long enough to tell them from all others.
struct FirstLine {  // before its first call
    const char* text;
};
struct LastLine {  // behind its last call
    const char* text;
};

// A line that tells how a step went, by its beginning, and in network words what it says. The words stand behind "did
// not run: " and the like; what the line goes on with may be the error of another call.
struct Line {
    const char* beginning;
    const char* words;
};

class Lines {
public:
    static constexpr std::size_t kMost = 4;

    constexpr Lines() = default;
    constexpr Lines(std::initializer_list<Line> lines)
    {
        for (const Line& line : lines) {
            lines_[count_++] = line;
        }
    }

    constexpr const Line* begin() const { return lines_; }
    constexpr const Line* end() const { return lines_ + count_; }

private:
    Line lines_[kMost] = {};
    std::size_t count_ = 0;
};

struct NothingToDo : Lines {  // its last lines when it had nothing to do
    using Lines::Lines;
};
struct Failed : Lines {  // its last lines when it gave up
    using Lines::Lines;
};
struct PassedOver : Lines {  // update()'s own lines when the step does not run
    using Lines::Lines;
};
struct Unread : Lines {  // update()'s own lines when it does not run because a value that it needs could not be read
    using Lines::Lines;
};

// What the stored configuration must have for a step to run where update() writes no line about it.
struct Condition {
    enum class Kind {
        Value,   // the leaf has a value; otherwise the step cannot run
        Rows,    // the list has an entry
        NoRows,  // the list has none
    };

    Kind kind;
    const char* path;   // absolute; entries on the way by position: "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]"
    const char* words;  // in network words, what there is instead
};

constexpr Condition needs_value(const char* path, const char* words)
{
    return {Condition::Kind::Value, path, words};
}

constexpr Condition needs_rows(const char* path, const char* words)
{
    return {Condition::Kind::Rows, path, words};
}

constexpr Condition needs_no_rows(const char* path, const char* words)
{
    return {Condition::Kind::NoRows, path, words};
}

// In the order of update(): the first that does not hold is the reason.
class Conditions {
public:
    static constexpr std::size_t kMost = 3;

    constexpr Conditions() = default;
    constexpr Conditions(std::initializer_list<Condition> conditions)
    {
        for (const Condition& condition : conditions) {
            conditions_[count_++] = condition;
        }
    }

    constexpr const Condition* begin() const { return conditions_; }
    constexpr const Condition* end() const { return conditions_ + count_; }

private:
    Condition conditions_[kMost] = {};
    std::size_t count_ = 0;
};

struct Step {
    constexpr Step(const char* function, Title in_network_words, FirstLine first, LastLine last,
                   const NothingToDo& nothing, const Failed& gave_up, const PassedOver& not_run,
                   const Unread& cannot_run, const Conditions& unsaid, const Removes& removes, CallSites sites)
        : name(function),
          title(in_network_words.text),
          first_line(first.text),
          last_line(last.text),
          nothing_to_do(nothing),
          failed(gave_up),
          passed_over(not_run),
          unread(cannot_run),
          conditions(unsaid),
          meant_removals(removes),
          calls(sites)
    {
    }

    const char* name;  // of its function
    const char* title;
    const char* first_line;
    const char* last_line;
    Lines nothing_to_do;
    Lines failed;
    Lines passed_over;
    Lines unread;
    Conditions conditions;
    Removes meant_removals;
    CallSites calls;
};

// What update() says of how many BGP router entities there are, the number between the two texts, and what it says when
// that is not one. Why a step that needs just one does not run depends on the number.
inline constexpr char kEntitiesFound[] = "Found ";
inline constexpr char kEntitiesFoundEnd[] = " BGP entities";
inline constexpr char kNoEntity[] = "the device has no BGP router entity";
inline constexpr char kEntitiesUncounted[] = "how many BGP router entities are stored cannot be read";
inline constexpr char kSeveralEntities[] = "BGP router entities are stored: which one is meant is not known";
inline constexpr Line kNotOneEntity = {"No need to update others config\n",
                                       "the device has not just one BGP router entity"};

// Why a step did not run when its conditions hold and the log is silent.
inline constexpr char kStepMissing[] = "the log does not tell of it";

}  // namespace bgp_contract
