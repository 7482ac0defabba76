// XCString: the exported forms of what the header has bodies of.
#define VELDT20_IN_PLACE
#include <veldt20/strings_xcstring.h>
