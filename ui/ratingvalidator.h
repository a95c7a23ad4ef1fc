// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDoubleValidator>

/// Lets only a rating be typed: 0 to 100 with at most one decimal behind a point, whatever the user's locale.
///
/// The base would let a greater number be typed and refuse it only at the end. Owner: its parent. Thread: GUI.
class RatingValidator : public QDoubleValidator
{
    Q_OBJECT

public:
    explicit RatingValidator(QObject* parent = nullptr);

    State validate(QString& text, int& position) const override;
};
