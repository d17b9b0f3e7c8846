/*
 * Text listing of what the converter decoded from one message: the epoch,
 * the meteorological record and, per satellite, identity, navigation-string
 * flags and the observations of each valid signal.
 */
#ifndef ZELNAV_CLI_PRINT_EPOCH_H
#define ZELNAV_CLI_PRINT_EPOCH_H

#include <cstdio>

#include "zel.h"

void printEpoch(FILE* out, const lsttblSat_t* lst, const tblGpsUtc_t* gpsUtc);

#endif
