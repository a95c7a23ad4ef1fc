// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/rowsdrag.h"

#include "browse/metadatamodel.h"
#include "store/operationreply.h"

#include <QDrag>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMimeData>
#include <QPainter>
#include <QUrl>
#include <QWidget>

#include <algorithm>

namespace {

constexpr int labelMargin = 6; // device-independent pixels
constexpr int longestLabel = 300;

// What hangs on the pointer.
QPixmap labelOf(const QString& text, const QWidget& widget)
{
    const QFontMetrics metrics = widget.fontMetrics();
    const QString shown = metrics.elidedText(text, Qt::ElideMiddle, longestLabel);
    const QRect area(0, 0, metrics.horizontalAdvance(shown) + 2 * labelMargin, metrics.height() + labelMargin);
    QPixmap pixmap((QSizeF(area.size()) * widget.devicePixelRatioF()).toSize());
    pixmap.setDevicePixelRatio(widget.devicePixelRatioF());
    pixmap.fill(widget.palette().color(QPalette::Highlight));
    QPainter painter(&pixmap);
    painter.setFont(widget.font());
    painter.setPen(widget.palette().color(QPalette::HighlightedText));
    painter.drawText(area, Qt::AlignCenter | Qt::TextSingleLine, shown);
    return pixmap;
}

QList<QUrl> addressesOf(const QStringList& filePaths)
{
    QList<QUrl> addresses;
    addresses.reserve(filePaths.size());
    for (const QString& filePath : filePaths)
        addresses.append(QUrl::fromLocalFile(filePath));
    return addresses;
}

} // namespace

RowsDrag::RowsDrag(MetaDataModel* model, QWidget* source)
    : m_model(model)
    , m_source(source)
{
}

RowsDrag::~RowsDrag()
{
    giveUp();
}

void RowsDrag::begin(const QVector<int>& rows)
{
    giveUp();
    if (rows.isEmpty())
        return;
    const bool areAtHand = std::all_of(rows.begin(), rows.end(), [this](int row) { return m_model->isRowFresh(row); });
    if (!areAtHand) {
        // Of another query than the one on screen, these rows would be other files.
        m_isRefused = !m_model->isQueryShown() || m_model->isRequeryPending();
        if (!m_isRefused)
            fetch(rows);
        return;
    }
    QStringList filePaths;
    for (const int row : rows)
        filePaths.append(m_model->index(row, 0).data(MetaDataModel::RecordRole).value<MetaData>().filePath());
    carry(filePaths);
}

void RowsDrag::giveUp()
{
    m_isRefused = false;
    if (!m_reply)
        return;
    m_reply->disconnect(this);
    m_reply->cancel();
    m_reply->deleteLater();
    m_reply.clear();
}

void RowsDrag::fetch(const QVector<int>& rows)
{
    QModelIndexList indexes;
    indexes.reserve(rows.size());
    for (const int row : rows)
        indexes.append(m_model->index(row, 0));
    m_reply = m_model->collectFields(indexes, QStringLiteral("filePath"));
    connect(m_reply, &OperationReply::finished, this, &RowsDrag::handleFetched);
}

void RowsDrag::handleFetched()
{
    OperationReply* reply = m_reply.data();
    m_reply.clear();
    reply->deleteLater();
    // Who has let go meanwhile does not want to drag any more.
    if (reply->hasError() || !QGuiApplication::mouseButtons().testFlag(Qt::LeftButton))
        return;
    carry(reply->result(QStringLiteral("items")).toStringList());
}

void RowsDrag::carry(const QStringList& filePaths)
{
    if (filePaths.isEmpty())
        return;
    // The platform deletes the drag after its end, and the drag its data.
    auto* drag = new QDrag(m_source);
    auto* data = new QMimeData;
    data->setUrls(addressesOf(filePaths));
    drag->setMimeData(data);
    const QString text
        = filePaths.size() == 1 ? QFileInfo(filePaths.first()).fileName() : tr("%1 files").arg(filePaths.size());
    drag->setPixmap(labelOf(text, *m_source));
    drag->exec(Qt::CopyAction, Qt::CopyAction);
}
