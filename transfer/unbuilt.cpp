#include "conn/unbuilt.h"
#include "transfer/methods.h"

namespace zmfb::transfer {

Value exiletable(Self&, Args) { return conn::unbuilt("exiletable"); }

}  // namespace zmfb::transfer
