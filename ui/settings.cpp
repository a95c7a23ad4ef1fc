// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/settings.h"

#include <QSettings>

#include <memory>

namespace {

std::unique_ptr<QSettings>& installedFile()
{
    static std::unique_ptr<QSettings> file;
    return file;
}

} // namespace

Settings::Settings(const QString& group, QObject* parent)
    : QObject(parent)
    , m_group(group.endsWith(QLatin1Char('/')) ? group : group + QLatin1Char('/'))
{
}

void Settings::setFileName(const QString& path)
{
    installedFile() = std::make_unique<QSettings>(path, QSettings::IniFormat);
}

bool Settings::contains(const QString& key) const
{
    return installedFile() && installedFile()->contains(m_group + key);
}

QVariant Settings::value(const QString& key, const QVariant& defaultValue) const
{
    return installedFile() ? installedFile()->value(m_group + key, defaultValue) : defaultValue;
}

void Settings::setValue(const QString& key, const QVariant& value)
{
    if (installedFile())
        installedFile()->setValue(m_group + key, value);
}

void Settings::remove(const QString& key)
{
    if (installedFile())
        installedFile()->remove(m_group + key);
}
