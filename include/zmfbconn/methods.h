/// The declarations of all methods, in the namespace zmfb::m; zmfbconn/methods/ has them by subject.
#pragma once

#include "zmfbconn/methods/catalog.h"
#include "zmfbconn/methods/connection.h"
#include "zmfbconn/methods/locks.h"
#include "zmfbconn/methods/matrix.h"
#include "zmfbconn/methods/schema.h"
#include "zmfbconn/methods/sql.h"
#include "zmfbconn/methods/transfer.h"
