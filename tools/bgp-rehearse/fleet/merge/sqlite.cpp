#include "fleet/merge/sqlite.h"

#include <sqlite3.h>

namespace bgp_rehearse {

namespace {

[[noreturn]] void refuse(sqlite3* database)
{
    throw DatabaseError(sqlite3_errmsg(database));
}

// A name without a folder may mean something else to SQLite.
std::string plain_name(const std::string& file)
{
    return file.find('/') == std::string::npos ? "./" + file : file;
}

}  // namespace

void Database::Closed::operator()(sqlite3* database) const noexcept
{
    sqlite3_close_v2(database);
}

Database::Database(const std::string& file, Access access)
{
    const int flags = access == Access::Read ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(plain_name(file).c_str(), &opened, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    database_.reset(opened);
    if (result != SQLITE_OK) {
        refuse(opened);
    }
}

void Database::execute(const char* statements) const
{
    if (sqlite3_exec(database_.get(), statements, nullptr, nullptr, nullptr) != SQLITE_OK) {
        refuse(database_.get());
    }
}

void Statement::Finalized::operator()(sqlite3_stmt* statement) const noexcept
{
    sqlite3_finalize(statement);
}

Statement::Statement(const Database& database, std::string_view text)
{
    sqlite3_stmt* prepared = nullptr;
    if (sqlite3_prepare_v3(database.handle(), text.data(), static_cast<int>(text.size()), SQLITE_PREPARE_PERSISTENT,
                           &prepared, nullptr) != SQLITE_OK) {
        refuse(database.handle());
    }
    statement_.reset(prepared);
}

Statement& Statement::with_texts(const std::vector<std::string>& values)
{
    reset();
    int parameter = 0;
    for (const std::string& value : values) {
        give(++parameter, value);
    }
    return *this;
}

bool Statement::next()
{
    const int result = sqlite3_step(statement_.get());
    if (result == SQLITE_ROW) {
        return true;
    }
    if (result != SQLITE_DONE) {
        refuse(sqlite3_db_handle(statement_.get()));
    }
    return false;
}

int64_t Statement::number(int column) const noexcept
{
    return sqlite3_column_int64(statement_.get(), column);
}

double Statement::real(int column) const noexcept
{
    return sqlite3_column_double(statement_.get(), column);
}

std::string_view Statement::text(int column) const noexcept
{
    const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(statement_.get(), column));
    const int size = sqlite3_column_bytes(statement_.get(), column);
    return bytes == nullptr ? std::string_view() : std::string_view(bytes, static_cast<std::size_t>(size));
}

bool Statement::null(int column) const noexcept
{
    return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

// What it tells is what the last row came to, which next() has told.
void Statement::reset() noexcept
{
    sqlite3_reset(statement_.get());
}

void Statement::check(int result) const
{
    if (result != SQLITE_OK) {
        refuse(sqlite3_db_handle(statement_.get()));
    }
}

void Statement::give(int parameter, int64_t value)
{
    check(sqlite3_bind_int64(statement_.get(), parameter, value));
}

void Statement::give(int parameter, double value)
{
    check(sqlite3_bind_double(statement_.get(), parameter, value));
}

void Statement::give(int parameter, std::string_view value)
{
    const char* const bytes = value.empty() ? "" : value.data();  // a null pointer would be NULL
    check(sqlite3_bind_text(statement_.get(), parameter, bytes, static_cast<int>(value.size()), SQLITE_TRANSIENT));
}

void Statement::give(int parameter, std::nullopt_t /*none*/)
{
    check(sqlite3_bind_null(statement_.get(), parameter));
}

}  // namespace bgp_rehearse
