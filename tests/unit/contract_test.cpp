// What the contract says of the steps and their call sites: whole, in words for the screen, and not at odds with itself.
#include <gmock/gmock.h>

#include <set>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "contract/rekeyed_tables.h"
#include "contract/steps.h"

namespace bgp_test {
namespace {

using bgp_contract::CallSite;
using bgp_contract::CallSites;
using bgp_contract::Class;
using bgp_contract::Demand;
using bgp_contract::Meaning;
using bgp_contract::Must;
using testing::ContainsRegex;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;

std::vector<const CallSite*> all_sites()
{
    std::vector<const CallSite*> sites;
    for (const bgp_contract::Step& step : bgp_contract::kSteps) {
        for (const CallSite& site : step.calls) {
            sites.push_back(&site);
        }
    }
    for (const CallSite& site : bgp_contract::kCallsOfEachTable) {
        sites.push_back(&site);
    }
    return sites;
}

// Words that can stand in a sentence on the screen: no sentence of their own, no path and no name of C or of a MIB. The
// expressions are those of POSIX.
void expect_network_words(const std::string& words, const std::string& where)
{
    EXPECT_THAT(words, Not(IsEmpty())) << where;
    EXPECT_THAT(words, Not(MatchesRegex("[A-Z][a-z].*"))) << where << ": a leading capital";
    EXPECT_THAT(words, Not(MatchesRegex(".*[.:, \n]"))) << where << ": ends like a sentence";
    EXPECT_THAT(words, Not(ContainsRegex("[/_{}%]"))) << where << ": a path or a name of C";
    EXPECT_THAT(words, Not(ContainsRegex("(^| )[a-z]+[A-Z]"))) << where << ": a name of a MIB";
}

bool ends_the_process(const Demand& demand)
{
    return demand.must == Must::Fault || demand.must == Must::Assert;
}

TEST(Contract, CallSiteWithoutMeaning_DoesNotCompile)
{
    EXPECT_TRUE((std::is_constructible_v<CallSite, const char*, const char*, Demand, Meaning>));
    EXPECT_FALSE((std::is_constructible_v<CallSite, const char*, const char*, Demand>));
    EXPECT_FALSE(std::is_default_constructible_v<Meaning>);
    EXPECT_FALSE((std::is_constructible_v<Meaning, Class, const char*>)) << "made by the functions of step.h alone";
}

TEST(Contract, StepWithoutTitle_DoesNotCompile)
{
    using namespace bgp_contract;  // all the words of a step
    EXPECT_TRUE((std::is_constructible_v<Step, const char*, Title, FirstLine, LastLine, NothingToDo, Failed, PassedOver,
                                         Unread, Conditions, Removes, CallSites>));
    EXPECT_FALSE((std::is_constructible_v<Step, const char*, FirstLine, LastLine, NothingToDo, Failed, PassedOver,
                                          Unread, Conditions, Removes, CallSites>));
}

TEST(Contract, Sentences_AreNetworkWords)
{
    for (const CallSite* site : all_sites()) {
        const std::string where = std::string(site->function) + " " + site->path;
        expect_network_words(site->meaning.sentence, where);
        expect_network_words(site->meaning.other_sentence, where);
    }
    for (const bgp_contract::Step& step : bgp_contract::kSteps) {
        expect_network_words(step.title, step.name);
        for (const auto& lines : {step.nothing_to_do, step.failed, step.passed_over, step.unread}) {
            for (const bgp_contract::Line& line : lines) {
                expect_network_words(line.words, line.beginning);
            }
        }
        for (const bgp_contract::Condition& condition : step.conditions) {
            expect_network_words(condition.words, condition.path);
        }
        for (const bgp_contract::MeantRemoval& removal : step.meant_removals) {
            expect_network_words(removal.sentence, step.name);
        }
    }
}

TEST(Contract, CallsWhoseFailureEndsTheProcess_StopTheirStep)
{
    for (const CallSite* site : all_sites()) {
        if (ends_the_process(site->demand)) {
            EXPECT_EQ(site->meaning.kind, Class::Stops) << site->function << " " << site->path;
            EXPECT_EQ(site->meaning.other_kind, Class::Stops) << site->function << " " << site->path;
        }
    }
}

TEST(Contract, NoCallOfAStepIsListedTwice)
{
    for (const bgp_contract::Step& step : bgp_contract::kSteps) {
        std::set<std::tuple<std::string, std::string>> sites;
        for (const CallSite& site : step.calls) {
            EXPECT_TRUE(sites.emplace(site.function, site.path).second) << step.name << ": " << site.path;
        }
    }
}

}  // namespace
}  // namespace bgp_test
