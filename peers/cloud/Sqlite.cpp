// SPDX-License-Identifier: Apache-2.0

#include "cloud/Sqlite.h"

#include <sqlite3.h>

#include <utility>

namespace Cloud {

Rows::~Rows()
{
    // A statement that could not be prepared is null, which sqlite3_clear_bindings does not accept.
    if (m_statement != nullptr) {
        sqlite3_reset(m_statement);
        sqlite3_clear_bindings(m_statement);
    }
}

bool Rows::Next()
{
    const int result = m_statement == nullptr ? SQLITE_MISUSE : sqlite3_step(m_statement);
    if (result != SQLITE_ROW && result != SQLITE_DONE && m_failed != nullptr) {
        *m_failed = true;
    }
    return result == SQLITE_ROW;
}

std::string Rows::Text(int column) const
{
    // In this order: sqlite3_column_bytes is the size of the form that was read last.
    const void* bytes = sqlite3_column_blob(m_statement, column);
    const int size = sqlite3_column_bytes(m_statement, column);
    return bytes == nullptr || size <= 0
               ? std::string()
               : std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
}

std::int64_t Rows::Integer(int column) const
{
    return sqlite3_column_int64(m_statement, column);
}

void Statement::Finalize::operator()(sqlite3_stmt* statement) const
{
    sqlite3_finalize(statement);
}

void Statement::Bind(int place, std::int64_t value)
{
    sqlite3_bind_int64(m_statement.get(), place, value);
}

void Statement::Bind(int place, std::string_view text)
{
    // A null pointer would bind NULL, which equals no text.
    sqlite3_bind_text64(m_statement.get(), place, text.data() == nullptr ? "" : text.data(),
                        text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

void Database::Close::operator()(sqlite3* database) const
{
    sqlite3_close_v2(database);
}

std::unique_ptr<Database> Database::Open(const std::string& path, int flags, std::string& why)
{
    sqlite3* handle = nullptr;
    const int result = sqlite3_open_v2(path.c_str(), &handle, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    auto database = std::make_unique<Database>();
    // A failure gives a handle too, which has the reason and must be closed.
    database->m_database.reset(handle);
    if (result != SQLITE_OK) {
        why = handle == nullptr ? "no memory" : sqlite3_errmsg(handle);
        return nullptr;
    }
    return database;
}

std::unique_ptr<Database> Database::OpenReadOnly(const std::string& path, std::string& why)
{
    return Open(path, SQLITE_OPEN_READONLY, why);
}

std::unique_ptr<Database> Database::Create(const std::string& path, std::string& why)
{
    return Open(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, why);
}

Statement Database::Prepare(const std::string& sql)
{
    sqlite3_stmt* handle = nullptr;
    if (sqlite3_prepare_v3(m_database.get(), sql.c_str(), static_cast<int>(sql.size()),
                           SQLITE_PREPARE_PERSISTENT, &handle, nullptr) != SQLITE_OK) {
        m_failed = true;
    }
    Statement statement;
    statement.m_statement.reset(handle);
    statement.m_failed = &m_failed;
    return statement;
}

bool Database::Execute(const std::string& sql)
{
    const bool done =
        sqlite3_exec(m_database.get(), sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
    m_failed = m_failed || !done;
    return done;
}

bool Database::TakeFailed()
{
    return std::exchange(m_failed, false);
}

std::string Database::Why() const
{
    return sqlite3_errmsg(m_database.get());
}

}  // namespace Cloud
