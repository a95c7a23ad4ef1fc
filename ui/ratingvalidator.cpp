// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/ratingvalidator.h"

#include <QLocale>

RatingValidator::RatingValidator(QObject* parent)
    : QDoubleValidator(0.0, 100.0, 1, parent)
{
    QLocale plain = QLocale::c();
    plain.setNumberOptions(QLocale::RejectGroupSeparator);
    setLocale(plain);
    setNotation(QDoubleValidator::StandardNotation);
}

QValidator::State RatingValidator::validate(QString& text, int& position) const
{
    const State state = QDoubleValidator::validate(text, position);
    return state == Intermediate && text.toDouble() > top() ? Invalid : state;
}
