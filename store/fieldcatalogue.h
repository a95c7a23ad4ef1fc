// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

/// The fixed lists of record fields. Thread: any; the lists are built once and only read afterwards.

/// The 21 stored fields in column order, from "id" to "scanTimestamp".
const QStringList& allFieldNames();

/// The seven fields that are indexed, shown as columns, searched by lookups and sorted by.
const QStringList& sortableFieldNames();

/// The display label of a sortable field ("File Path" for "filePath"); an empty string for any other name.
QString fieldLabel(const QString& fieldName);
