#include "fleet/report/csv.h"

#include "base/output_file.h"

namespace bgp_rehearse {

namespace {

constexpr std::size_t kPiece = 1 << 16;

constexpr char kQuery[] =
    "SELECT name, input_class, verdict, severity, reason.finding, reason.text, count, finding.sentence, step, advice "
    "FROM router LEFT JOIN finding ON router = router.number LEFT JOIN reason ON id = reason "
    "ORDER BY router.number, finding.number";
constexpr int kFields = 10;

constexpr char kNames[] = "router,backup,verdict,severity,finding,reason,count,sentence,step,advice\r\n";

}  // namespace

std::string csv_field(std::string_view text)
{
    std::string field;
    if (!text.empty() && std::string_view("=+-@\t\r").find(text.front()) != std::string_view::npos) {
        field += '\'';
    }
    field += text;
    if (field.find_first_of(",\"\r\n'") == std::string::npos) {
        return field;
    }
    std::string quoted = "\"";
    for (const char byte : field) {
        quoted.append(byte == '"' ? 2 : 1, byte);
    }
    return quoted + '"';
}

bool write_csv(const Database& database, int file)
{
    std::string out = kNames;
    Statement each(database, kQuery);
    while (each.next()) {
        for (int i = 0; i < kFields; ++i) {
            out.append(csv_field(each.text(i))).append(i + 1 < kFields ? "," : "\r\n");
        }
        if (out.size() >= kPiece) {
            if (!write_all(file, out.data(), out.size())) {
                return false;
            }
            out.clear();
        }
    }
    return write_all(file, out.data(), out.size());
}

}  // namespace bgp_rehearse
