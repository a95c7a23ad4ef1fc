// SPDX-License-Identifier: GPL-3.0-or-later
// Another program on the desktop: its left half can be dragged away as the files that it was given, its right half
// takes what is dropped on it. What happens is written to a log file.
//
// Usage: dragpartner LOG-FILE PATH…
#include <QApplication>
#include <QDrag>
#include <QDropEvent>
#include <QFile>
#include <QHBoxLayout>
#include <QLabel>
#include <QMetaEnum>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>

#include <memory>

namespace {

QString nameOf(Qt::DropAction action)
{
    return QString::fromLatin1(QMetaEnum::fromType<Qt::DropAction>().valueToKey(action));
}

class Log final
{
public:
    explicit Log(const QString& path)
        : m_file(path)
    {
        if (!m_file.open(QIODevice::WriteOnly | QIODevice::Append))
            qFatal("Cannot write %s", qPrintable(path));
    }

    void add(const QString& line)
    {
        m_file.write(line.toUtf8() + '\n');
        m_file.flush();
    }

private:
    QFile m_file;
};

class Source final : public QLabel
{
    Q_OBJECT

public:
    Source(Log& log, const QStringList& paths)
        : QLabel(QStringLiteral("Source"))
        , m_log(log)
        , m_paths(paths)
    {
        setAlignment(Qt::AlignCenter);
    }

protected:
    // As a file manager does, it would also move or link.
    void mouseMoveEvent(QMouseEvent* event) override
    {
        if (!event->buttons().testFlag(Qt::LeftButton))
            return;
        auto addressData = std::make_unique<QMimeData>();
        QList<QUrl> addresses;
        for (const QString& path : m_paths)
            addresses.append(QUrl::fromLocalFile(path));
        addressData->setUrls(addresses);
        auto* drag = new QDrag(this);
        drag->setMimeData(addressData.release());
        connect(drag, &QDrag::actionChanged, this,
            [this](Qt::DropAction action) { m_log.add(QStringLiteral("offered ") + nameOf(action)); });
        const Qt::DropAction action = drag->exec(Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, Qt::CopyAction);
        m_log.add(QStringLiteral("given ") + nameOf(action));
    }

private:
    Log& m_log;
    QStringList m_paths;
};

class Target final : public QLabel
{
    Q_OBJECT

public:
    explicit Target(Log& log)
        : QLabel(QStringLiteral("Target"))
        , m_log(log)
    {
        setAlignment(Qt::AlignCenter);
        setAcceptDrops(true);
    }

protected:
    void dragEnterEvent(QDragEnterEvent* event) override
    {
        m_log.add(QStringLiteral("possible %1").arg(int(event->possibleActions())));
        event->acceptProposedAction();
    }

    void dropEvent(QDropEvent* event) override
    {
        const QList<QUrl> addresses = event->mimeData()->urls();
        for (const QUrl& address : addresses)
            m_log.add(QStringLiteral("taken ") + address.toLocalFile());
        event->acceptProposedAction();
        m_log.add(QStringLiteral("dropped ") + nameOf(event->dropAction()));
    }

private:
    Log& m_log;
};

} // namespace

int main(int argumentsCount, char* arguments[])
{
    const QApplication application(argumentsCount, arguments);
    const QStringList texts = QApplication::arguments();
    Log log(texts.at(1));
    QWidget window;
    window.setWindowTitle(QStringLiteral("Drag Partner"));
    auto* layout = new QHBoxLayout(&window);
    layout->addWidget(new Source(log, texts.mid(2)));
    layout->addWidget(new Target(log));
    window.setGeometry(200, 960, 700, 150);
    window.show();
    return QApplication::exec();
}

#include "dragpartner.moc"
