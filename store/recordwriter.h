// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/metadata.h"

class QSqlDatabase;

/// Inserts or updates records and returns those that could not be written, each with its error text set.
///
/// A record with an id updates that row; one without is inserted with `scanTimestamp` (ms since the epoch, UTC) or,
/// with `lookupByFilePath`, updates the row of the same path and gives it that time stamp. A record that carries an
/// error is not written and comes back as it is. Opens no transaction of its own.
/// Thread: that of the connection.
MetaDataList writeMetaData(const QSqlDatabase& connection, int tableId, const MetaDataList& items, qint64 scanTimestamp,
    bool lookupByFilePath);
