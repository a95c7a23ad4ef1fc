// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/metadatamodel.h"

#include "browse/fieldscollection.h"
#include "store/database.h"
#include "store/fieldcatalogue.h"
#include "store/operationreply.h"
#include "store/valuetext.h"

#include <QEventLoop>

namespace {

constexpr int requestDelay = 100; // milliseconds
constexpr double opacityOfUndefined = 0.5;
const QChar playlistMark(0x25CF);

QStringList lookupFields(bool withFilePath)
{
    static const QStringList fields{ QStringLiteral("library"), QStringLiteral("description") };
    static const QStringList fieldsWithFilePath = fields + QStringList{ QStringLiteral("filePath") };
    return withFilePath ? fieldsWithFilePath : fields;
}

} // namespace

MetaDataModel::MetaDataModel(QObject* parent)
    : QAbstractTableModel(parent)
    , m_sortField(sortableFieldNames().first())
{
    m_requestTimer.setSingleShot(true);
    m_requestTimer.setInterval(requestDelay);
    connect(&m_requestTimer, &QTimer::timeout, this, &MetaDataModel::requestPages);
    m_cleanTimer.setSingleShot(true);
    m_cleanTimer.setInterval(requestDelay);
    connect(&m_cleanTimer, &QTimer::timeout, this, &MetaDataModel::cleanInvalidPages);
}

MetaDataModel::~MetaDataModel()
{
    // A receiver of the signals sent here must not start anything new.
    m_database.clear();
    if (m_collections.empty())
        return;
    QEventLoop loop;
    connect(this, &MetaDataModel::fieldsCollectionContextsReleased, &loop, &QEventLoop::quit);
    for (const auto& collection : m_collections) {
        collection->reply()->cancel();
        collection->reply()->setError(tr("Canceled"));
    }
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

void MetaDataModel::setDatabase(Database* database, int tableId)
{
    m_database = database;
    m_tableId = tableId;
    showOtherTable();
}

Database* MetaDataModel::database() const
{
    return m_database;
}

void MetaDataModel::setTableId(int tableId)
{
    m_tableId = tableId;
    showOtherTable();
}

void MetaDataModel::showOtherTable()
{
    m_shownGeneration = -1;
    m_isRowsCountActual = false;
    m_cache.clear();
    m_requestQueue.clear();
    if (!m_database) {
        beginResetModel();
        m_rowsCount = -1;
        endResetModel();
    } else if (m_rowsCount > 0)
        emit dataChanged(index(0, 0), index(m_rowsCount - 1, ColumnsCount - 1));
    emit tableChaged();
    askNewQuery();
}

void MetaDataModel::askNewQuery()
{
    ++m_queryNumber;
    m_queryError.clear();
    requery();
}

void MetaDataModel::setLookup(const QString& text)
{
    if (m_lookup == text)
        return;
    m_lookup = text;
    m_lookupWords = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    askNewQuery();
}

void MetaDataModel::setFilePathLookupEnabled(bool enabled)
{
    if (m_isFilePathLookupEnabled == enabled)
        return;
    m_isFilePathLookupEnabled = enabled;
    askNewQuery();
}

void MetaDataModel::setFilters(bool lastScannedOnly, bool playlistOnly)
{
    if (m_lastScannedOnly == lastScannedOnly && m_playlistOnly == playlistOnly)
        return;
    m_lastScannedOnly = lastScannedOnly;
    m_playlistOnly = playlistOnly;
    askNewQuery();
}

void MetaDataModel::sort(int column, Qt::SortOrder order)
{
    m_sortField = headerData(column, Qt::Horizontal, FieldNameRole).toString();
    m_sortOrder = order;
    askNewQuery();
}

QVariantMap MetaDataModel::filterParameters() const
{
    return {
        { QStringLiteral("lastScannedOnly"), m_lastScannedOnly },
        { QStringLiteral("playlistOnly"), m_playlistOnly },
        { QStringLiteral("lookup"), m_lookup },
        { QStringLiteral("lookupFields"), lookupFields(m_isFilePathLookupEnabled) },
    };
}

QVariantMap MetaDataModel::queryParameters() const
{
    QVariantMap parameters = filterParameters();
    parameters.insert(QStringLiteral("sortField"), m_sortField);
    parameters.insert(QStringLiteral("sortOrder"), m_sortOrder);
    return parameters;
}

int MetaDataModel::rowCount(const QModelIndex& parent) const
{
    if (parent.isValid() || !m_database)
        return 0;
    if (m_rowsCount >= 0)
        return m_rowsCount;
    // Nobody has asked yet; the answer comes with a reset.
    const_cast<MetaDataModel*>(this)->requestRowsCount();
    return 0;
}

int MetaDataModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnsCount;
}

MetaData MetaDataModel::recordAt(int row) const
{
    const int page = row / PageCache::pageSize;
    if (!m_cache.contains(page) || m_cache.isInvalid(page))
        schedulePageRequest(page);
    return m_cache.record(row);
}

bool MetaDataModel::isRequeryPending() const
{
    return m_database && m_answeredGeneration != m_generation;
}

bool MetaDataModel::isRowFresh(int row) const
{
    const int page = row / PageCache::pageSize;
    return m_cache.contains(page) && !m_cache.isInvalid(page);
}

MetaData MetaDataModel::freshRecord(qint64 metaDataId) const
{
    const int row = m_cache.ids().key(metaDataId, -1);
    return row >= 0 && isRowFresh(row) && !isRequeryPending() ? m_cache.record(row) : MetaData();
}

void MetaDataModel::showChangedRecord(const MetaData& record)
{
    const int row = m_cache.replace(record);
    if (row >= 0 && row < m_rowsCount)
        emit dataChanged(index(row, 0), index(row, ColumnsCount - 1));
}

QVariant MetaDataModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= m_rowsCount)
        return {};
    const MetaData record = recordAt(index.row());
    if (record.isNull())
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return displayText(record, index.column());
    case RecordRole:
        return QVariant::fromValue(record);
    case HighlightedWordsRole:
        return highlightedWords(index.column());
    case OpacityRole:
        return index.column() == LibraryColumn && record.library().isEmpty() ? opacityOfUndefined : QVariant();
    case TrailingTextRole:
        return index.column() == RatingColumn && record.playlist() == 1 ? QString(playlistMark) : QVariant();
    default:
        return {};
    }
}

QVariant MetaDataModel::displayText(const MetaData& record, int column) const
{
    switch (column) {
    case FilePathColumn:
        return record.filePath();
    case FileNameColumn:
        return record.fileName();
    case TypeColumn:
        return record.fileType();
    case LibraryColumn:
        return record.library().isEmpty() ? tr("Undefined") : record.library();
    case DescriptionColumn:
        return record.description();
    case DurationColumn:
        return durationText(record.duration());
    case RatingColumn:
        return QString::number(record.rating(), 'f', 1);
    default:
        return {};
    }
}

QVariant MetaDataModel::highlightedWords(int column) const
{
    const bool isSearched = column == LibraryColumn || column == DescriptionColumn
        || (m_isFilePathLookupEnabled && (column == FilePathColumn || column == FileNameColumn));
    return isSearched ? m_lookupWords : QVariant();
}

QVariant MetaDataModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnsCount)
        return {};
    const QString field = sortableFieldNames().at(section);
    switch (role) {
    case Qt::DisplayRole:
        return fieldLabel(field);
    case FieldNameRole:
        return field;
    case Qt::TextAlignmentRole:
        return int(Qt::AlignLeft | Qt::AlignVCenter);
    case HideableRole:
        return section != DescriptionColumn;
    default:
        return {};
    }
}

Qt::ItemFlags MetaDataModel::flags(const QModelIndex& index) const
{
    // A view without a drop indicator asks for the flags of no index at all.
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index) | Qt::ItemIsDropEnabled;
    return index.isValid() ? flags | Qt::ItemIsDragEnabled : flags;
}

QStringList MetaDataModel::mimeTypes() const
{
    static const QStringList types{ QStringLiteral("text/uri-list") };
    return types;
}

bool MetaDataModel::dropMimeData(
    const QMimeData* /*data*/, Qt::DropAction /*action*/, int /*row*/, int /*column*/, const QModelIndex& /*parent*/)
{
    // Dropped files become a scan request of the view; nothing is inserted here.
    return false;
}
