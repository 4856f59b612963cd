// The little C++ over SQLite's C interface that the fleet's database needs. Whatever SQLite refuses is one exception.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace bgp_rehearse {

class DatabaseError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Database {
public:
    enum class Access { Write, Read };

    // The file must be there; an empty one is an empty database.
    Database(const std::string& file, Access access);

    // Runs statements that give no rows.
    void execute(const char* statements) const;

    sqlite3* handle() const noexcept { return database_.get(); }

private:
    struct Closed {
        void operator()(sqlite3* database) const noexcept;
    };
    std::unique_ptr<sqlite3, Closed> database_;
};

// A statement, prepared once. Must not outlive its database.
class Statement {
public:
    Statement(const Database& database, std::string_view text);

    // Begins it anew with these values of its parameters, in their order. Texts are copied.
    template <typename... Values>
    Statement& with(const Values&... values)
    {
        reset();
        int parameter = 0;
        (give(++parameter, values), ...);
        return *this;
    }

    Statement& with_texts(const std::vector<std::string>& values);

    // Goes to the next row; false when there is none.
    bool next();

    // Runs one that gives no rows.
    template <typename... Values>
    void run(const Values&... values)
    {
        with(values...).next();
    }

    // The columns of the row at hand, from 0. What is NULL is 0 or "". A text is good until the next row.
    int64_t number(int column) const noexcept;
    std::size_t count(int column) const noexcept { return static_cast<std::size_t>(number(column)); }
    double real(int column) const noexcept;
    std::string_view text(int column) const noexcept;
    bool null(int column) const noexcept;

private:
    void reset() noexcept;
    void give(int parameter, int64_t value);
    void give(int parameter, uint64_t value) { give(parameter, static_cast<int64_t>(value)); }
    void give(int parameter, int value) { give(parameter, static_cast<int64_t>(value)); }
    void give(int parameter, uint32_t value) { give(parameter, static_cast<int64_t>(value)); }
    void give(int parameter, double value);
    void give(int parameter, std::string_view value);
    void give(int parameter, const std::string& value) { give(parameter, std::string_view(value)); }
    void give(int parameter, const char* value) { give(parameter, std::string_view(value)); }
    void give(int parameter, std::nullopt_t);
    template <typename Value>
    void give(int parameter, const std::optional<Value>& value)
    {
        if (value) {
            give(parameter, *value);
        } else {
            give(parameter, std::nullopt);
        }
    }
    void check(int result) const;

    struct Finalized {
        void operator()(sqlite3_stmt* statement) const noexcept;
    };
    std::unique_ptr<sqlite3_stmt, Finalized> statement_;
};

}  // namespace bgp_rehearse
