/// Takes its synopses from a file when it runs.
#include <command/cmdTableHelperIf.h>
