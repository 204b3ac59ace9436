// A daemon's own functions and data, under names that the library has inside.
#include <stddef.h>

int eth_support = 7;

void run(const char * /*command*/)
{
    eth_support = 0;
}

bool format(char * /*buffer*/, size_t /*size*/, const char * /*text*/, ...)
{
    return false;
}

int to_int(const char * /*text*/)
{
    return -1;
}

bool file_line(const char * /*path*/, char * /*line*/, int /*size*/)
{
    return false;
}
