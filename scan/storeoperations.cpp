// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/storeoperations.h"

#include "scan/evaluateoperation.h"
#include "scan/replaceoperation.h"
#include "scan/scanoperation.h"

BulkOperations scanBulkOperations()
{
    return { runScan, runEvaluateLibraries, runReplace };
}
