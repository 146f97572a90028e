// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace Cloud {

/// The rows of one run of a statement. The statement can't be run again while this object exists.
class Rows {
public:
    Rows(sqlite3_stmt* statement, bool* failed) : m_statement(statement), m_failed(failed) {}
    ~Rows();
    Rows(const Rows&) = delete;
    Rows& operator=(const Rows&) = delete;

    /// False behind the last row, and on an error, which `Database::TakeFailed` reports.
    bool Next();

    /// Columns count from 0.
    std::string Text(int column) const;
    std::int64_t Integer(int column) const;

private:
    sqlite3_stmt* m_statement;
    bool* m_failed;
};

/// A prepared statement. Must not outlive its database.
class Statement {
public:
    Statement() = default;

    /// Binds the values in order and starts a run.
    template <typename... Values>
    Rows Run(const Values&... values)
    {
        int place = 0;
        (Bind(++place, values), ...);
        return Rows(m_statement.get(), m_failed);
    }

private:
    friend class Database;

    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };

    void Bind(int place, std::int64_t value);
    void Bind(int place, std::string_view text);
    void Bind(int place, const std::string& text) { Bind(place, std::string_view(text)); }
    void Bind(int place, const char* text) { Bind(place, std::string_view(text)); }

    std::unique_ptr<sqlite3_stmt, Finalize> m_statement;
    bool* m_failed = nullptr;
};

/// A connection for one thread. Every error is remembered until `TakeFailed` reports it.
class Database {
public:
    /// Null, and the reason in `why`, on failure.
    static std::unique_ptr<Database> OpenReadOnly(const std::string& path, std::string& why);
    static std::unique_ptr<Database> Create(const std::string& path, std::string& why);

    Statement Prepare(const std::string& sql);
    bool Execute(const std::string& sql);

    /// Whether an error has occurred since the last call.
    bool TakeFailed();

    /// SQLite's text for the last error.
    std::string Why() const;

private:
    struct Close {
        void operator()(sqlite3* database) const;
    };

    static std::unique_ptr<Database> Open(const std::string& path, int flags, std::string& why);

    std::unique_ptr<sqlite3, Close> m_database;
    bool m_failed = false;
};

}  // namespace Cloud
