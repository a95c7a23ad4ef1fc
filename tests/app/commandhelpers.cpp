// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/commandhelpers.h"

#include "browse/metadatamodel.h"
#include "tests/support/testsupport.h"
#include "ui/operationdialog.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QtTest>

#include <algorithm>

namespace CommandHelpers {

QVariantList column(const WindowFixture& fixture, const QString& statement)
{
    return TestSupport::firstColumn(fixture.databaseFile(), statement);
}

QVariant value(const WindowFixture& fixture, const QString& statement)
{
    return TestSupport::firstValue(fixture.databaseFile(), statement);
}

double rating(const WindowFixture& fixture, qint64 id)
{
    return value(fixture, QStringLiteral("SELECT rating FROM MetaData1 WHERE id=%1").arg(id)).toDouble();
}

qint64 idAt(WindowFixture& fixture, int row)
{
    const QModelIndex index = fixture.view().model()->index(row, 0);
    return index.data(MetaDataModel::RecordRole).value<MetaData>().id();
}

qint64 currentId(WindowFixture& fixture)
{
    return fixture.view().currentIndex().data(MetaDataModel::RecordRole).value<MetaData>().id();
}

bool isIdle(WindowFixture& fixture)
{
    const MetaDataModel* model = fixture.view().metaDataModel();
    return model->isRowsCountActual() && !model->isProcessing() && !model->isRequeryPending();
}

void selectRows(WindowFixture& fixture, int first, int last)
{
    MetaDataView& view = fixture.view();
    view.setCurrentIndex(view.model()->index(first, 0));
    const QItemSelection rows(
        view.model()->index(first, 0), view.model()->index(last, view.model()->columnCount() - 1));
    view.selectionModel()->select(rows, QItemSelectionModel::ClearAndSelect);
}

void trigger(WindowFixture& fixture, const QString& text)
{
    const QList<QAction*> actions = fixture.window().findChildren<QAction*>();
    const auto hasText = [&text](const QAction* action) {
        return action->text().remove(QLatin1Char('&')) == text;
    };
    const auto action = std::find_if(actions.begin(), actions.end(), hasText);
    QVERIFY2(action != actions.end(), qPrintable(text));
    (*action)->trigger();
}

void addRecords(const WindowFixture& fixture, int count)
{
    column(fixture,
        QStringLiteral("WITH RECURSIVE numbers(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM numbers WHERE n < %1) "
                       "INSERT INTO MetaData1 (filePath, fileName, fileType, description) "
                       "SELECT '/zz/' || n || '.wav', n || '.wav', 'wav', '' FROM numbers")
            .arg(count));
}

WriteLock::WriteLock(const WindowFixture& fixture)
{
    QSqlDatabase connection = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connectionName);
    connection.setDatabaseName(fixture.databaseFile());
    if (!connection.open() || !QSqlQuery(connection).exec(QStringLiteral("BEGIN IMMEDIATE")))
        qFatal("Cannot lock %s", qPrintable(fixture.databaseFile()));
}

WriteLock::~WriteLock()
{
    QSqlDatabase::database(m_connectionName).close();
    QSqlDatabase::removeDatabase(m_connectionName);
}

void accept(const QDialog& dialog)
{
    dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
}

void choosePath(WindowFixture& fixture, const QString& path, QString* title)
{
    whenModal<QFileDialog>(&fixture.window(), [path, title](QFileDialog& chooser) {
        if (title)
            *title = chooser.windowTitle();
        auto* edit = chooser.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        edit->setText(path);
        QTest::keyClick(edit, Qt::Key_Return);
    });
}

void answer(WindowFixture& fixture, QMessageBox::Icon icon, QMessageBox::StandardButton button, Message* message)
{
    const auto press = [button, message](QMessageBox& box) {
        if (message) {
            message->title = box.windowTitle();
            message->text = box.text();
            message->informativeText = box.informativeText();
            message->icon = box.icon();
            const QAbstractButton* noButton = box.button(QMessageBox::No);
            message->isNoDefault = noButton && noButton == static_cast<QAbstractButton*>(box.defaultButton());
        }
        box.button(button)->click();
    };
    whenModal<QMessageBox>(&fixture.window(), press, [icon](QMessageBox& box) { return box.icon() == icon; });
}

DialogTitles::DialogTitles()
{
    QCoreApplication::instance()->installEventFilter(this);
}

bool DialogTitles::eventFilter(QObject* watched, QEvent* event)
{
    const auto* dialog = event->type() == QEvent::Show ? qobject_cast<OperationDialog*>(watched) : nullptr;
    if (dialog)
        m_titles.append(dialog->windowTitle());
    return QObject::eventFilter(watched, event);
}

} // namespace CommandHelpers
