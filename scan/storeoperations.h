// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/bulkoperations.h"

/// The bodies of scan, evaluateLibraries and replace, to be handed to the store before it is opened. Thread: any.
BulkOperations scanBulkOperations();
