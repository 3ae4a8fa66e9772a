// The C floor client, compiled as C++ and linked with jsoncpp as zuvCli must be: the least
// C++ program that does the same exchange.
#include "floorClient.c"
