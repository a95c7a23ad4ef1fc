// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/foldedtext.h"
#include "store/likepattern.h"
#include "store/rowset.h"

#include <QString>

#include <vector>

/// Of a term that can be looked up in memory.
LikePattern pattern(const QString& term);

std::vector<size_t> rowsOf(const RowSet& set);

/// Texts of no to seven words: some of them in nearly every row, some here and there, some in one row only; with
/// underscores and more than one space between them, with capitals and other letters than those of ASCII.
FoldedText randomTexts(size_t rows, uint seed);

/// The rows whose texts match, each looked at by itself.
RowSet matchingRows(const FoldedText& texts, const LikePattern& pattern);
