#include "fleet/report/html/data.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

#include "base/text_escape.h"
#include "fleet/report/command.h"
#include "report/html/island.h"
#include "report/json_writer.h"

namespace bgp_rehearse {

namespace {

constexpr std::size_t kChunk = 500;  // routers of a line

template <typename Words>
std::size_t place_of(std::string_view word, const Words& words)
{
    return static_cast<std::size_t>(std::find(words.begin(), words.end(), word) - words.begin());
}

class FleetData {
public:
    FleetData(const FleetSummary& summary, const Database& database, const std::string& name, Island* island)
        : summary_(summary), database_(database), commands_(database, name), json_([island](std::string_view text) {
              island->add(text);
              return true;
          })
    {
        for (std::size_t i = 0; i < summary.reasons.size(); ++i) {
            places_[{summary.reasons[i].id, summary.reasons[i].severity}] = i + 1;
        }
    }

    void write()
    {
        names();
        routers();
        static_cast<void>(json_.finish());
    }

private:
    void names();
    template <typename Words>
    void words(const char* name, const Words& words);
    void routers();
    void router(const Statement& router);
    void reasons(int64_t router);

    const FleetSummary& summary_;
    const Database& database_;
    FullReportCommands commands_;
    JsonWriter json_;
    std::map<std::pair<int64_t, std::string>, std::size_t> places_;  // of the reasons
    Statement reason_{database_, "SELECT DISTINCT reason, severity FROM finding WHERE router = ? ORDER BY number"};
};

template <typename Words>
void FleetData::words(const char* name, const Words& words)
{
    json_.name(name).begin('[', JsonWriter::Dense);
    for (const char* word : words) {
        json_.text(word);
    }
    json_.end();
}

void FleetData::names()
{
    json_.begin('{', JsonWriter::Dense);
    words("verdicts", kVerdicts);
    words("classes", kInputClasses);
    json_.name("tail").text(escaped(commands_.tail())).name("reasons").begin('[', JsonWriter::Dense);
    for (const ReasonCount& each : summary_.reasons) {
        json_.begin('[', JsonWriter::Dense)
            .text(each.severity)
            .text(escaped(each.finding))
            .text(escaped(each.text))
            .end();
    }
    json_.end().end();
}

void FleetData::routers()
{
    Statement each(database_, "SELECT number, verdict, input_class, name, sentence FROM router ORDER BY number");
    std::size_t in_chunk = 0;
    while (each.next()) {
        if (in_chunk++ == 0) {
            json_.begin('[', JsonWriter::Dense);
        }
        router(each);
        if (in_chunk == kChunk) {
            json_.end();
            in_chunk = 0;
        }
    }
    if (in_chunk > 0) {
        json_.end();
    }
}

void FleetData::router(const Statement& router)
{
    const int64_t number = router.number(0);
    json_.begin('[', JsonWriter::Dense);
    json_.number(place_of(router.text(1), kVerdicts)).number(place_of(router.text(2), kInputClasses));
    json_.text(escaped(router.text(3)) + "\n" + escaped(router.text(4)) + "\n" + escaped(commands_.head(number)));
    reasons(number);
    json_.end();
}

void FleetData::reasons(int64_t router)
{
    json_.begin('[', JsonWriter::Dense);
    for (reason_.with(router); reason_.next();) {
        json_.number(places_.at({reason_.number(0), std::string(reason_.text(1))}));
    }
    json_.end();
}

}  // namespace

void write_fleet_data(const FleetSummary& summary, const Database& database, const std::string& name, Markup* page)
{
    Island island("fleet-data", page);
    FleetData(summary, database, name, &island).write();
    island.finish();
}

}  // namespace bgp_rehearse
