#include "conn/unbuilt.h"
#include "schema/methods.h"

namespace zmfb::schema {

Value addfield(Self&, Args) { return conn::unbuilt("addfield"); }
Value addlimbofield(Self&, Args) { return conn::unbuilt("addlimbofield"); }
Value alterfield(Self&, Args) { return conn::unbuilt("alterfield"); }
Value createtable(Self&, Args) { return conn::unbuilt("createtable"); }
Value createtableexternal(Self&, Args) { return conn::unbuilt("createtableexternal"); }
Value createview(Self&, Args) { return conn::unbuilt("createview"); }
Value deleteallrecords(Self&, Args) { return conn::unbuilt("deleteallrecords"); }
Value deleterecord(Self&, Args) { return conn::unbuilt("deleterecord"); }
Value dropfield(Self&, Args) { return conn::unbuilt("dropfield"); }
Value dropgenerator(Self&, Args) { return conn::unbuilt("dropgenerator"); }
Value dropindex(Self&, Args) { return conn::unbuilt("dropindex"); }
Value dropindexbasedonfield(Self&, Args) { return conn::unbuilt("dropindexbasedonfield"); }
Value droponlytable(Self&, Args) { return conn::unbuilt("droponlytable"); }
Value droptable(Self&, Args) { return conn::unbuilt("droptable"); }
Value droptrigger(Self&, Args) { return conn::unbuilt("droptrigger"); }
Value droptriggerbasedonfield(Self&, Args) { return conn::unbuilt("droptriggerbasedonfield"); }
Value dropview(Self&, Args) { return conn::unbuilt("dropview"); }
Value dropviewsfromtable(Self&, Args) { return conn::unbuilt("dropviewsfromtable"); }
Value grantaccess(Self&, Args) { return conn::unbuilt("grantaccess"); }
Value renamefield(Self&, Args) { return conn::unbuilt("renamefield"); }
Value setfieldposition(Self&, Args) { return conn::unbuilt("setfieldposition"); }

}  // namespace zmfb::schema
