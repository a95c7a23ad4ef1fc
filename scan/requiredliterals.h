// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

/// Texts of which every match of a pattern contains at least one, each as long as could be found.
///
/// `pattern` is a valid, case-sensitive expression in the classic Qt syntax. The list is empty when nothing is known
/// of what a match contains; the answer errs on that side, since a text that is named here wrongly hides matches.
/// Thread: any.
QStringList requiredLiterals(const QString& pattern);
