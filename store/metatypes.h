// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Registers the types that travel as arguments of queued calls: "MetaData", "MetaDataList", "OperationReply*" and
/// "Qt::CaseSensitivity". The classes that queue such calls call it themselves; repeating it costs nothing.
/// Thread: any.
void registerStoreMetaTypes();
