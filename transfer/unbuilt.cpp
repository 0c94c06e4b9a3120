#include "conn/unbuilt.h"
#include "transfer/methods.h"

namespace zmfb::transfer {

Value bringdbf(Self&, Args) { return conn::unbuilt("bringdbf"); }
Value exiletable(Self&, Args) { return conn::unbuilt("exiletable"); }
Value fclsfile(Self&, Args) { return conn::unbuilt("fclsfile"); }
Value fcrtfile(Self&, Args) { return conn::unbuilt("fcrtfile"); }
Value fopnfile(Self&, Args) { return conn::unbuilt("fopnfile"); }
Value getfilename(Self&, Args) { return conn::unbuilt("getfilename"); }
Value removefilenameext(Self&, Args) { return conn::unbuilt("removefilenameext"); }
Value removezerobytes(Self&, Args) { return conn::unbuilt("removezerobytes"); }

}  // namespace zmfb::transfer
