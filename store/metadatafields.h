// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QVariant>

#include <vector>

class MetaData;

/// One field of a record by name: how it is read as a variant and written from one.
///
/// Writing converts as `QVariant` does; an invalid variant gives an empty string or zero.
struct MetaDataField
{
    QString name;
    QVariant (*read)(const MetaData&);
    void (*write)(MetaData&, const QVariant&);
};

/// All 22 fields: those of `allFieldNames()` and "error". Thread: any; built once and only read afterwards.
const std::vector<MetaDataField>& metaDataFields();

/// The field of this name, or null.
const MetaDataField* findMetaDataField(const QString& name);
