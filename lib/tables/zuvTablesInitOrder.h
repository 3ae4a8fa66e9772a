#pragma once
// The tables are built before main in one order, whatever order the linker puts their files
// in: the storage controller closures and records, then the vendor names, then the location
// rules. The exit handlers destroy them in the reverse order. These priorities come after the
// C++ runtime's own (up to 100) and before every object of default priority.

#define ZUV_BUILT_FIRST __attribute__((init_priority(1001)))
#define ZUV_BUILT_SECOND __attribute__((init_priority(1002)))
#define ZUV_BUILT_THIRD __attribute__((init_priority(1003)))
