// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/database.h"

#include <QTemporaryDir>
#include <QThread>

class OperationReply;

/// A store on a thread of its own with an empty database, into which the benchmark corpus is scanned.
///
/// Owner and thread: one benchmark.
class BenchScanner final
{
public:
    BenchScanner();
    ~BenchScanner();
    Q_DISABLE_COPY(BenchScanner)

    void clear();
    void scan();

private:
    static void await(OperationReply* reply);

    QTemporaryDir m_folder;
    QThread m_thread;
    Database m_database;
};
