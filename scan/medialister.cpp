// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/medialister.h"

#include "scan/folderbranch.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QVector>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

namespace {

namespace fs = std::filesystem;

enum class Kind
{
    Folder,
    File,
    Other
};

// Paths are kept in the encoding of the file system: names that are no valid text can be walked through, too.
struct Place
{
    std::string path;
    Kind kind = Kind::Other;
    std::shared_ptr<const FolderBranch> branch;
};

Kind kindOf(const fs::file_status& status)
{
    if (fs::is_directory(status))
        return Kind::Folder;
    return fs::is_regular_file(status) ? Kind::File : Kind::Other;
}

std::string canonicalPath(const std::string& path)
{
    std::error_code error;
    const fs::path canonical = fs::canonical(path, error);
    return error ? std::string() : canonical.native();
}

std::shared_ptr<const FolderBranch> givenBranch(const std::string& path)
{
    return std::make_shared<const FolderBranch>(path, canonicalPath(path));
}

std::shared_ptr<const FolderBranch> linkedBranch(const Place& folder, const std::string& link)
{
    return std::make_shared<const FolderBranch>(*folder.branch, folder.path, link, canonicalPath(link));
}

// As QDir::match() does it, which would compile every expression anew for every name.
QVector<QRegularExpression> compiled(const QStringList& wildcards)
{
    QVector<QRegularExpression> expressions;
    for (const QString& wildcard : wildcards) {
        expressions.append(QRegularExpression(QRegularExpression::wildcardToRegularExpression(wildcard),
            QRegularExpression::CaseInsensitiveOption | QRegularExpression::DontCaptureOption));
    }
    return expressions;
}

class Walk
{
public:
    Walk(const QStringList& filters, const std::function<bool()>& isCanceled)
        : m_filters(compiled(filters))
        , m_isCanceled(isCanceled)
    {
    }

    void addGiven(const QString& path);
    QStringList run();
    const QStringList& unreadFolders() const { return m_unreadFolders; }

private:
    bool isCanceled() const { return m_isCanceled && m_isCanceled(); }
    void listFolder(const Place& folder);
    void noteUnread(const Place& folder, const std::error_code& error);
    void addEntry(const Place& folder, const fs::directory_entry& entry);
    void addFolder(const Place& parent, std::string path, bool isLink);
    bool matches(const std::string& name) const;

    QVector<QRegularExpression> m_filters;
    const std::function<bool()>& m_isCanceled;
    std::deque<Place> m_queue;
    QStringList m_files;
    QStringList m_unreadFolders;
};

void Walk::addGiven(const QString& path)
{
    if (path.isEmpty())
        return;
    const QString cleanPath = QDir::cleanPath(QDir::current().absoluteFilePath(path));
    const std::string native = QFile::encodeName(cleanPath).toStdString();
    std::error_code error;
    const Kind kind = kindOf(fs::status(native, error));
    if (kind != Kind::Other)
        m_queue.push_back({ native, kind, kind == Kind::Folder ? givenBranch(native) : nullptr });
}

QStringList Walk::run()
{
    while (!m_queue.empty() && !isCanceled()) {
        const Place place = std::move(m_queue.front());
        m_queue.pop_front();
        if (place.kind == Kind::Folder)
            listFolder(place);
        else
            m_files.append(QFile::decodeName(QByteArray::fromStdString(place.path)));
    }
    return m_files;
}

void Walk::listFolder(const Place& folder)
{
    std::error_code error;
    fs::directory_iterator entry(folder.path, error);
    while (!error && entry != fs::directory_iterator() && !isCanceled()) {
        addEntry(folder, *entry);
        entry.increment(error);
    }
    if (error)
        noteUnread(folder, error);
}

void Walk::noteUnread(const Place& folder, const std::error_code& error)
{
    const QString path = QFile::decodeName(QByteArray::fromStdString(folder.path));
    m_unreadFolders.append(path);
    qWarning().noquote() << "Unable to list folder:" << path << QString::fromLocal8Bit(error.message().c_str());
}

void Walk::addEntry(const Place& folder, const fs::directory_entry& entry)
{
    std::string path = entry.path().native();
    const std::string name = entry.path().filename().native();
    if (name.empty() || name.front() == '.')
        return;
    std::error_code error;
    const Kind kind = kindOf(entry.status(error));
    if (kind == Kind::Folder)
        addFolder(folder, std::move(path), entry.is_symlink(error));
    else if (kind == Kind::File && matches(name))
        m_queue.push_back({ std::move(path), Kind::File, nullptr });
}

bool Walk::matches(const std::string& name) const
{
    const QString text = QFile::decodeName(QByteArray::fromStdString(name));
    return std::any_of(m_filters.begin(), m_filters.end(),
        [&](const QRegularExpression& filter) { return filter.match(text).hasMatch(); });
}

void Walk::addFolder(const Place& parent, std::string path, bool isLink)
{
    const std::shared_ptr<const FolderBranch> branch = isLink ? linkedBranch(parent, path) : parent.branch;
    if (branch->isOnTheWay(path))
        return;
    m_queue.push_back({ std::move(path), Kind::Folder, branch });
}

} // namespace

const QStringList& mediaFileFilters()
{
    static const QStringList filters = QStringLiteral("*.wav;*.mp3;*.aif;*.aiff").split(QLatin1Char(';'));
    return filters;
}

QStringList listMediaFiles(const QStringList& paths, const QStringList& filters,
    const std::function<bool()>& isCanceled, QStringList* unreadFolders)
{
    Walk walk(filters, isCanceled);
    for (const QString& path : paths)
        walk.addGiven(path);
    QStringList files = walk.run();
    if (unreadFolders)
        unreadFolders->append(walk.unreadFolders());
    return files;
}
