// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>

/// A generated folder tree that looks like a large sound library, and what was put into it; see
/// tests/corpus/make-corpus.py for the fields of an entry. Thread: the test's.
namespace Corpus {

/// Makes `folder`, which must not exist yet; fails the program when it cannot.
void generate(const QString& folder, int files, double brokenShare, const QStringList& options = {});

/// What was put into the files of a generated folder; "path" is made absolute.
QList<QVariantMap> entries(const QString& folder);

} // namespace Corpus
