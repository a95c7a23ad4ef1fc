// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "browse/metadatamodel.h"
#include "tests/support/storefixture.h"

#include <QElapsedTimer>

#include <memory>

namespace TestSupport {

/// Puts this many rows into an empty table, a million within some seconds. Row i (from 0) has the path of
/// `filledPath(tableId, i)`, the description "Sound i", the library "Library n" with n = i modulo 100 and the rating i
/// modulo 1000; every 1000th row is on the playlist. Fails the program when the rows are refused.
void fillTable(StoreFixture& store, int tableId, int rows);

/// The path of a row written by `fillTable()`; paths sort as the rows do.
QString filledPath(int tableId, int row);

/// Waits until the model has nothing under way and knows its count; false after a long time.
bool settles(const MetaDataModel& model);

/// A model of a table that has settled; fails the program when it does not.
std::unique_ptr<MetaDataModel> settledModel(StoreFixture& store, int tableId);

/// Waits until so many milliseconds have passed since the timer was started; always true.
bool reaches(const QElapsedTimer& timer, int milliseconds);

/// Whether so many milliseconds are a delay's whole length. What must last at least so long can be tested, as a slow
/// machine makes it only longer; but a coarse timer may end a twentieth early, and counts whole milliseconds.
bool isWholeDelay(qint64 waited, int delay);

/// The signatures of the signals and slots that a class itself has, in the order of its meta-object.
QStringList ownMethods(const QMetaObject& object);

/// The text that the model shows.
QString textAt(const MetaDataModel& model, int row, int column);

/// Stands in for a view that shows these rows, and keeps what the model asks and tells.
///
/// Owner and thread: one test; the model goes first.
struct Screen
{
    explicit Screen(MetaDataModel& model)
    {
        QObject::connect(
            &model, &MetaDataModel::rangeVisibilityCheck, &model, [this](int topRow, int bottomRow, bool& visible) {
                asked.append(topRow);
                rangesAreWholePages = rangesAreWholePages && bottomRow == topRow + 49;
                visible = topRow <= lastRow && bottomRow >= firstRow;
            });
        QObject::connect(&model, &QAbstractItemModel::dataChanged, &model,
            [this, &model](const QModelIndex& first, const QModelIndex& last) {
                changed.append(first.row());
                changesAreValid = changesAreValid && first.isValid() && last.isValid() && first.column() == 0
                    && last.column() == model.columnCount() - 1 && last.row() < model.rowCount();
            });
    }

    int firstRow = 0;
    int lastRow = 1000000;
    QList<int> asked;
    QList<int> changed;
    bool rangesAreWholePages = true;
    bool changesAreValid = true;
};

/// Reads a cell, as a view that paints it does; false when it is empty.
bool isShown(const MetaDataModel& model, int row);

} // namespace TestSupport
