// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/resources.h"

#include <QtGlobal>

void initialiseResources()
{
    Q_INIT_RESOURCE(resources);
}
