// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QVector>

class MetaDataModel;
class OperationReply;
class QWidget;

/// Carries the files of rows out of the program: a drag of their addresses, to be copied, never moved or linked.
///
/// When all rows are at hand the drag starts at once. Otherwise their paths are fetched first, and the drag starts if
/// the mouse button is still held by then; no row is left out. What is not at hand cannot be fetched while the rows on
/// screen are about to change, or belong to an earlier query than the model's: then nothing is dragged.
///
/// Owner: the view. Thread: GUI; while a drag is under way the platform runs an event loop inside `begin()`, or inside
/// the end of the fetching.
class RowsDrag : public QObject
{
    Q_OBJECT

public:
    /// Neither the model nor the widget that the drags come from is owned; both outlive this.
    RowsDrag(MetaDataModel* model, QWidget* source);
    ~RowsDrag() override;

    /// Drags these rows, in this order.
    void begin(const QVector<int>& rows);
    /// Forgets what is being fetched; a drag under way goes on.
    void giveUp();
    /// True while a drag that was asked for has not begun: the paths are being fetched, or cannot be until `giveUp()`.
    bool isHeldBack() const { return m_isRefused || !m_reply.isNull(); }

private:
    void fetch(const QVector<int>& rows);
    void handleFetched();
    void carry(const QStringList& filePaths);

    MetaDataModel* m_model;
    QWidget* m_source;
    QPointer<OperationReply> m_reply;
    bool m_isRefused = false;
};
