// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/metadataview.h"

#include <QDrag>
#include <QMimeData>
#include <QTimer>
#include <QWindow>
#include <QtTest>

/// What the table does with its own drags. Needs a real display: elsewhere no drag begins.
class MetaDataViewOwnDropTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void ownRowsAreNotScanned();
    void dragOfAnotherWidgetIsScanned();

private:
    // Begins a real drag that comes from this widget, lets it go over the table and ends it; true when it was under
    // way.
    bool dropFrom(QWidget* source, const QString& path);

    std::unique_ptr<MetaDataView> m_view;
    std::unique_ptr<QSignalSpy> m_scans;
    bool m_isEntered = false;
};

void MetaDataViewOwnDropTest::init()
{
    m_view = std::make_unique<MetaDataView>();
    m_view->resize(800, 400);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
    m_scans = std::make_unique<QSignalSpy>(m_view.get(), &MetaDataView::scanRequested);
}

void MetaDataViewOwnDropTest::cleanup()
{
    m_scans.reset();
    m_view.reset();
}

bool MetaDataViewOwnDropTest::dropFrom(QWidget* source, const QString& path)
{
    QObject* sourceSeen = nullptr;
    QTimer::singleShot(0, m_view.get(), [&]() {
        QMimeData data;
        data.setUrls({ QUrl::fromLocalFile(path) });
        QDropEvent dropped(m_view->viewport()->rect().center(), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        sourceSeen = dropped.source();
        QDragEnterEvent entered(
            m_view->viewport()->rect().center(), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(m_view->viewport(), &entered);
        m_isEntered = entered.isAccepted();
        QCoreApplication::sendEvent(m_view->viewport(), &dropped);
        QTest::keyClick(m_view->windowHandle(), Qt::Key_Escape);
    });
    // Qt deletes the drag after its end.
    QPointer<QDrag> drag(new QDrag(source));
    auto data = std::make_unique<QMimeData>();
    data->setUrls({ QUrl::fromLocalFile(path) });
    drag->setMimeData(data.release());
    drag->exec(Qt::CopyAction);
    return sourceSeen == source;
}

void MetaDataViewOwnDropTest::ownRowsAreNotScanned()
{
    QVERIFY(dropFrom(m_view.get(), "/sounds/own.wav"));
    QVERIFY(!m_isEntered);
    QWidget other;
    QVERIFY(dropFrom(&other, "/sounds/other.wav"));

    QVERIFY(m_scans->wait());
    QCOMPARE(m_scans->first().first().toStringList(), QStringList{ "/sounds/other.wav" });
}

void MetaDataViewOwnDropTest::dragOfAnotherWidgetIsScanned()
{
    QWidget other;

    QVERIFY(dropFrom(&other, "/sounds/a.wav"));
    QVERIFY(m_isEntered);

    QVERIFY(m_scans->wait());
    QCOMPARE(m_scans->first().first().toStringList(), QStringList{ "/sounds/a.wav" });
}

QTEST_MAIN(MetaDataViewOwnDropTest)

#include "tst_metadataviewowndrop.moc"
