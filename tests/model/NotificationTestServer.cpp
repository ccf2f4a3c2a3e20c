// The test server's code lives in its header; this file gives the header a source of the
// same name, so the meta-object compiler picks it up.
#include "NotificationTestServer.h"
