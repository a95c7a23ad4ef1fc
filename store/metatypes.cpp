// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/metatypes.h"

#include "store/metadata.h"
#include "store/operationreply.h"

namespace {

bool registerTypes()
{
    qRegisterMetaType<MetaData>("MetaData");
    qRegisterMetaType<MetaDataList>("MetaDataList");
    qRegisterMetaType<OperationReply*>("OperationReply*");
    qRegisterMetaType<Qt::CaseSensitivity>("Qt::CaseSensitivity");
    return true;
}

} // namespace

void registerStoreMetaTypes()
{
    static const bool registered = registerTypes();
    Q_UNUSED(registered)
}
