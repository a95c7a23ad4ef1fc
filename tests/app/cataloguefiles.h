// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

/// Catalogue files for the tests of backup and restore. Thread: the test's.

/// Makes a catalogue with this many records in table 1, named after it. No store may be open meanwhile.
void makeCatalogue(const QString& path, const QString& name, int records);

/// Overwrites the pages of these tables and indexes: the catalogue opens all the same.
void damagePagesOf(const QString& path, const QStringList& names);

/// Copies a catalogue as a program leaves it that dies within a change of all its records: a part of the change is in
/// the file, and what it was before is in the journal beside it.
void copyInTheMiddleOfAChange(const QString& path, const QString& copyPath);

/// What a catalogue file holds: its name, as given to `makeCatalogue()`, when the file is whole in every respect;
/// "missing" or what is wrong with it otherwise.
QString catalogueIn(const QString& path);
