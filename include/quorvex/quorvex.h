#ifndef QUORVEX_QUORVEX_H
#define QUORVEX_QUORVEX_H

/// @file
/// Everything that quorvex.dll offers.

#include "Export.h"
#include "FileStorage.h"
#include "FileStorage2.h"
#include "FileStorage3.h"
#include "FileStorageRecords.h"
#include "Md5.h"
#include "NetDisk.h"
#include "NetDiskRecords.h"
#include "OnlineUserSearch.h"
#include "Results.h"

#endif
