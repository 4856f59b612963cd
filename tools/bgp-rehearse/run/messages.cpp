#include "run/messages.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "base/output_file.h"
#include "report/json_writer.h"

namespace bgp_rehearse {

namespace {

using Json = nlohmann::json;
using bgp_platform::Fault;

void send_line(int channel, const std::string& line)
{
    static_cast<void>(write_all(channel, line.data(), line.size()));
}

void send(int channel, const char* kind, Json content)
{
    const Json message = {{"kind", kind}, {"content", std::move(content)}};
    send_line(channel, message.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
}

Json fault_json(const Fault& fault)
{
    return {{"assertion", fault.kind == Fault::Kind::Assertion},
            {"severity", fault.severity},
            {"function", fault.function},
            {"source", fault.source},
            {"line", fault.line},
            {"text", fault.text}};
}

Fault fault_of(const Json& json)
{
    Fault fault;
    fault.kind = json.at("assertion").get<bool>() ? Fault::Kind::Assertion : Fault::Kind::Fault;
    fault.severity = json.at("severity").get<int>();
    fault.function = json.at("function").get<std::string>();
    fault.source = json.at("source").get<std::string>();
    fault.line = json.at("line").get<unsigned int>();
    fault.text = json.at("text").get<std::string>();
    return fault;
}

CallTotals calls_of(const Json& json)
{
    return {json.at("reads").get<std::size_t>(), json.at("writes").get<std::size_t>(),
            json.at("failed_writes").get<std::size_t>()};
}

Finished finished_of(const Json& json)
{
    return {json.at("severity").get<int>(), json.at("mistake").get<std::string>(),
            json.at("invalid").get<std::string>(), json.at("write_error").get<std::string>(),
            json.at("report_error").get<std::string>()};
}

void take_message(const std::string& kind, const Json& content, Told* told)
{
    if (kind == "library") {
        told->library = content.get<std::string>();
    } else if (kind == "refused") {
        told->refused = content.get<std::string>();
    } else if (kind == "log") {
        told->take_log_line(content.get<std::string>());
    } else if (kind == "log_failed") {
        told->log_error = content.get<std::string>();
    } else if (kind == "step_line") {
        told->calls_at_step_line = calls_of(content.at("calls"));
        told->steps.take(content.at("line").get<std::string>());
    } else if (kind == "fault") {
        told->faults.push_back(fault_of(content));
    } else if (kind == "exception") {
        told->exception = content.get<std::string>();
    } else if (kind == "returned") {
        told->returned = true;
    } else if (kind == "finished") {
        told->finished = finished_of(content);
    }
}

}  // namespace

void Teller::library(const std::string& path) const
{
    send(channel_, "library", path);
}
void Teller::refused(const std::string& reason) const
{
    send(channel_, "refused", reason);
}
void Teller::log_line(std::string_view line) const
{
    send(channel_, "log", line);
}
void Teller::log_failed(const std::string& reason) const
{
    send(channel_, "log_failed", reason);
}
void Teller::step_line(std::string_view line, const CallTotals& calls) const
{
    // Put together here: the library's documents would take a twentieth of the time that a small router does.
    std::string message =
        fmt::format(R"({{"kind":"step_line","content":{{"calls":{{"reads":{},"writes":{},"failed_writes":{}}},"line":)",
                    calls.reads, calls.writes, calls.failed_writes);
    append_json(line, &message);
    send_line(channel_, message + "}}\n");
}
void Teller::fault(const Fault& fault) const
{
    send(channel_, "fault", fault_json(fault));
}
void Teller::exception(const std::string& text) const
{
    send(channel_, "exception", text);
}
void Teller::returned() const
{
    send(channel_, "returned", nullptr);
}

void Teller::finished(const Finished& finished) const
{
    send(channel_, "finished",
         {{"severity", finished.severity},
          {"mistake", finished.mistake},
          {"invalid", finished.invalid},
          {"write_error", finished.write_error},
          {"report_error", finished.report_error}});
}

// The line of a step's border was told as such just before.
void Told::take_log_line(std::string line)
{
    log.push_back(std::move(line));
    log_parts.add(step_of_line_, steps.current_number());
    step_of_line_ = steps.current_number();
}

void Told::take(std::string_view line)
{
    // The channel is open in the process of the code under rehearsal, which may write anything to it.
    const Json message = Json::parse(line, nullptr, false);
    try {
        take_message(message.at("kind").get<std::string>(), message.at("content"), this);
    } catch (const Json::exception&) {
    }
}

}  // namespace bgp_rehearse
