// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/application.h"
#include "audio/processend.h"

int main(int argc, char** argv)
{
    endProcess(runApplication(argc, argv));
}
