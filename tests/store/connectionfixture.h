// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSqlDatabase>
#include <QTemporaryDir>
#include <QVariantList>

/// An open SQLite connection of the test's own to a file.
///
/// Owner and thread: one test. No copy of the connection and no query may outlive it.
class TestConnection final
{
public:
    explicit TestConnection(const QString& filePath);
    ~TestConnection();
    Q_DISABLE_COPY(TestConnection)

    QSqlDatabase connection() const;

    /// The first column of a statement's rows; fails the program when the statement fails.
    QVariantList column(const QString& statement) const;
    /// The first column of the first row.
    QVariant value(const QString& statement) const;
    /// What SQLite would do for a statement, line by line.
    QStringList queryPlan(const QString& statement) const;
    /// Executes a statement and returns the driver's error text.
    QString execute(const QString& statement) const;

private:
    QString m_name;
};

/// Such a connection to a new file, with the full schema or without any.
class ConnectionFixture final
{
public:
    enum class Schema
    {
        Installed,
        None
    };

    explicit ConnectionFixture(Schema schema = Schema::Installed);

    QString filePath() const { return m_folder.filePath(QStringLiteral("test.dat")); }
    QSqlDatabase connection() const { return m_connection.connection(); }
    QVariantList column(const QString& statement) const { return m_connection.column(statement); }
    QVariant value(const QString& statement) const { return m_connection.value(statement); }
    QStringList queryPlan(const QString& statement) const { return m_connection.queryPlan(statement); }
    QString execute(const QString& statement) const { return m_connection.execute(statement); }

private:
    QTemporaryDir m_folder;
    TestConnection m_connection;
};
