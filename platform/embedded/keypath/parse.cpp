// Templates into plans.
#include "keypath/parser.h"

namespace bgp_platform::capi {

namespace {

// Keeps the pieces of a template as a plan.
class PlanMaker {
public:
    void child(std::string_view prefix, std::string_view name)
    {
        Step& step = add(Step::Kind::Child);
        step.prefix = prefix;
        step.name = name;
    }
    void begin_keys() { add(Step::Kind::Keys); }
    void key(KeySource::Kind kind, std::string_view literal)
    {
        plan.steps.back().keys.push_back({kind, std::string(literal)});
    }
    void end_keys() {}
    void index(KeySource::Kind kind, std::string_view digits)
    {
        add(Step::Kind::Index);
        key(kind, digits);
    }
    void splice(std::string_view before) { add(Step::Kind::Splice).name = before; }

    Plan plan;

private:
    Step& add(Step::Kind kind)
    {
        plan.steps.emplace_back();
        plan.steps.back().kind = kind;
        return plan.steps.back();
    }
};

}  // namespace

Plan parse_template(std::string_view format)
{
    PlanMaker maker;
    KeypathParser parser(format, true, &maker);
    maker.plan.error = parser.parse();
    maker.plan.readings = parser.readings();
    return std::move(maker.plan);
}

}  // namespace bgp_platform::capi
