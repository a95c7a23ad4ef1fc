// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QVariant>

/// One group of the program's settings file.
///
/// All objects share one process-wide INI file, installed with `setFileName()`; each stores its keys under the prefix
/// of its group. While no file is installed, values read as their defaults and nothing is stored.
///
/// Owner: whoever needs one, on the stack or with a parent. Thread: GUI.
class Settings : public QObject
{
    Q_OBJECT

public:
    /// The prefix of the keys is the group with "/" at its end.
    explicit Settings(const QString& group, QObject* parent = nullptr);

    /// Installs the process-wide file. The one that it replaces is written out and closed; an empty path leaves an
    /// object without a file, so that nothing stored later is kept.
    static void setFileName(const QString& path);

    bool contains(const QString& key) const;
    QVariant value(const QString& key, const QVariant& defaultValue = QVariant()) const;
    void setValue(const QString& key, const QVariant& value);
    void remove(const QString& key);

private:
    QString m_group;
};
