#include "conn/unbuilt.h"
#include "matrix/methods.h"

namespace zmfb::matrix {

Value applymatrix(Self&, Args) { return conn::unbuilt("applymatrix"); }
Value checkmatrix(Self&, Args) { return conn::unbuilt("checkmatrix"); }
Value extracmatrixoftable(Self&, Args) { return conn::unbuilt("extracmatrixoftable"); }
Value extractmatrix(Self&, Args) { return conn::unbuilt("extractmatrix"); }
Value hasfieldnamechanged(Self&, Args) { return conn::unbuilt("hasfieldnamechanged"); }
Value isfielddropped(Self&, Args) { return conn::unbuilt("isfielddropped"); }
Value isfieldstructurechanged(Self&, Args) { return conn::unbuilt("isfieldstructurechanged"); }
Value isfieldstructuredifferent(Self&, Args) { return conn::unbuilt("isfieldstructuredifferent"); }
Value isvalidfielddescriptor(Self&, Args) { return conn::unbuilt("isvalidfielddescriptor"); }
Value samefieldname(Self&, Args) { return conn::unbuilt("samefieldname"); }
Value toarray(Self&, Args) { return conn::unbuilt("toarray"); }

}  // namespace zmfb::matrix
