// The table engine: dBASE data files, memo files and compound index files with narrow text,
// its own memory and pools, and results 0 / positive outcome / negative error.
#pragma once

#include "engine4.h"
#include "error4.h"
#include "date4.h"
#include "file4.h"
#include "table4.h"
#include "index4.h"
