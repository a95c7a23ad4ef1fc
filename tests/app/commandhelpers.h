// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/app/windowfixture.h"

#include <QMessageBox>
#include <QStringList>
#include <QVariantList>

/// What the tests of the window's commands share. Thread: the test's.
namespace CommandHelpers {

/// The first column, or the first value, that a statement gives on the window's database file.
QVariantList column(const WindowFixture& fixture, const QString& statement);
QVariant value(const WindowFixture& fixture, const QString& statement);
/// The stored rating of a record of table 1.
double rating(const WindowFixture& fixture, qint64 id);

/// The id of the record shown in a row, and of the current one.
qint64 idAt(WindowFixture& fixture, int row);
qint64 currentId(WindowFixture& fixture);

/// True when the table shows what is stored and asks for nothing more.
bool isIdle(WindowFixture& fixture);
void selectRows(WindowFixture& fixture, int first, int last);
/// Triggers the action with this text.
void trigger(WindowFixture& fixture, const QString& text);
/// Writes that many more records for table 1, with paths behind the sample's.
void addRecords(const WindowFixture& fixture, int count);

struct Message
{
    QString title;
    QString text;
    QString informativeText;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    bool isNoDefault = false;
};

/// Presses a button of the next message box of this kind, and notes what it said.
void answer(
    WindowFixture& fixture, QMessageBox::Icon icon, QMessageBox::StandardButton button, Message* message = nullptr);

/// Nobody else can write the window's database file while it lives; it can be read.
class WriteLock final
{
public:
    explicit WriteLock(const WindowFixture& fixture);
    ~WriteLock();
    Q_DISABLE_COPY(WriteLock)

private:
    const QString m_connectionName = QStringLiteral("write lock");
};

/// Longer than the store waits for a lock, in milliseconds.
constexpr int patienceWithALock = 15000;

/// Presses OK of a dialog.
void accept(const QDialog& dialog);
/// Chooses a path in the next file chooser, and notes the chooser's title.
void choosePath(WindowFixture& fixture, const QString& path, QString* title = nullptr);

/// Notes the titles of the progress dialogs that appear while it lives, however short.
class DialogTitles : public QObject
{
    Q_OBJECT

public:
    DialogTitles();

    QStringList titles() const { return m_titles; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QStringList m_titles;
};

} // namespace CommandHelpers
