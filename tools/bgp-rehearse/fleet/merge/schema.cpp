#include "fleet/merge/schema.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "base/refuse.h"

namespace bgp_rehearse {

namespace {

// "fleet" in four bytes: what tells the file from other databases.
constexpr int kApplication = 0x666c7431;

// Rows come in the order of their keys, so that each is appended. What steps a router's upgrade took, and what came of
// each, is its course: a fleet has few that differ.
constexpr char kTables[] = R"(
CREATE TABLE about (
    key TEXT PRIMARY KEY,
    value TEXT NOT NULL
) WITHOUT ROWID;

CREATE TABLE course (
    id INTEGER PRIMARY KEY
);

CREATE TABLE router (
    number INTEGER PRIMARY KEY,
    name TEXT NOT NULL,
    sha256 TEXT NOT NULL,
    bytes INTEGER NOT NULL,
    input_class TEXT NOT NULL CHECK (input_class IN ('whole', 'partly', 'refused')),
    verdict TEXT NOT NULL CHECK (verdict IN ('SAFE', 'REVIEW', 'STOP', 'REFUSED')),
    sentence TEXT NOT NULL,
    exit_status INTEGER NOT NULL,
    stored INTEGER NOT NULL,
    kept INTEGER NOT NULL,
    changed INTEGER NOT NULL,
    moved INTEGER NOT NULL,
    moved_and_changed INTEGER NOT NULL,
    removed INTEGER NOT NULL,
    new INTEGER NOT NULL,
    result INTEGER NOT NULL,
    reads INTEGER NOT NULL,
    writes INTEGER NOT NULL,
    failed_writes INTEGER NOT NULL,
    seconds_least REAL NOT NULL,
    seconds_most REAL NOT NULL,
    course INTEGER REFERENCES course,
    source TEXT NOT NULL CHECK (source IN ('file', 'archive', 'repository')),
    path TEXT NOT NULL,
    member INTEGER,
    object TEXT,
    interfaces TEXT,
    user_profile INTEGER
);

CREATE TABLE reason (
    id INTEGER PRIMARY KEY,
    finding TEXT NOT NULL,
    text TEXT NOT NULL,
    UNIQUE (finding, text)
);

CREATE TABLE finding (
    router INTEGER NOT NULL REFERENCES router,
    number INTEGER NOT NULL,
    reason INTEGER NOT NULL REFERENCES reason,
    severity TEXT NOT NULL CHECK (severity IN ('note', 'review', 'stop')),
    count INTEGER NOT NULL,
    sentence TEXT NOT NULL,
    advice TEXT NOT NULL,
    step TEXT NOT NULL,
    PRIMARY KEY (router, number)
) WITHOUT ROWID;

CREATE TABLE place (
    router INTEGER NOT NULL,
    finding INTEGER NOT NULL,
    number INTEGER NOT NULL,
    path TEXT NOT NULL,
    text TEXT NOT NULL,
    PRIMARY KEY (router, finding, number),
    FOREIGN KEY (router, finding) REFERENCES finding (router, number)
) WITHOUT ROWID;

CREATE TABLE course_step (
    course INTEGER NOT NULL REFERENCES course,
    number INTEGER NOT NULL,
    name TEXT NOT NULL,
    outcome TEXT NOT NULL,
    PRIMARY KEY (course, number)
) WITHOUT ROWID;

CREATE TABLE change (
    router INTEGER NOT NULL REFERENCES router,
    step INTEGER NOT NULL,
    digest TEXT NOT NULL,
    PRIMARY KEY (router, step)
) WITHOUT ROWID;

CREATE TABLE error (
    router INTEGER NOT NULL REFERENCES router,
    number INTEGER NOT NULL,
    text TEXT NOT NULL,
    PRIMARY KEY (router, number)
) WITHOUT ROWID;
)";

constexpr char kIndexes[] = R"(
CREATE UNIQUE INDEX router_name ON router (name);
CREATE INDEX router_verdict ON router (verdict);
CREATE INDEX finding_reason ON finding (reason, severity, router);

CREATE VIEW step AS
    SELECT router.number AS router, course_step.number, course_step.name, outcome, change.digest AS changes
    FROM router JOIN course_step ON course_step.course = router.course
    LEFT JOIN change ON change.router = router.number AND change.step = course_step.number;

CREATE VIEW reasons AS
    SELECT printf('%016x', id) AS reason, finding, severity, routers, places, text
    FROM (SELECT reason, severity, count(DISTINCT router) AS routers, sum(count) AS places
          FROM finding GROUP BY reason, severity)
    JOIN reason ON id = reason
    ORDER BY CASE severity WHEN 'stop' THEN 0 WHEN 'review' THEN 1 ELSE 2 END, routers DESC, finding, text;

CREATE VIEW router_reasons AS
    SELECT router.name, router.verdict, finding.severity, reason.finding, reason.text, finding.count,
        finding.sentence, finding.step
    FROM finding JOIN router ON router.number = finding.router JOIN reason ON reason.id = finding.reason
    ORDER BY router.number, finding.number;

CREATE VIEW verdicts AS
    SELECT verdict, count(*) AS routers FROM router GROUP BY verdict;
)";

int64_t pragma(const Database& database, const char* text)
{
    Statement statement(database, text);
    return statement.next() ? statement.number(0) : 0;
}

}  // namespace

void make_tables(const Database& database)
{
    database.execute(
        fmt::format("PRAGMA application_id = {}; PRAGMA user_version = {}", kApplication, kDatabaseVersion).c_str());
    database.execute(kTables);
}

void make_indexes(const Database& database)
{
    database.execute(kIndexes);
}

Database open_fleet(const std::string& file)
{
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) {
        refuse(file, std::strerror(errno));
    }
    try {
        Database database(file, Database::Access::Read);
        if (pragma(database, "PRAGMA application_id") != kApplication) {
            refuse(file, "this is no database of a fleet; bgp-rehearse fleet run or fleet merge makes one");
        }
        if (const int64_t version = pragma(database, "PRAGMA user_version"); version != kDatabaseVersion) {
            refuse(file, fmt::format("a database of version {}, and this program reads {}: make it anew", version,
                                     kDatabaseVersion));
        }
        return database;
    } catch (const DatabaseError& error) {
        refuse(file, fmt::format("this cannot be read as a database: {}", error.what()));
    }
}

}  // namespace bgp_rehearse
