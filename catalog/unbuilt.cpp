#include "conn/unbuilt.h"
#include "catalog/methods.h"

namespace zmfb::catalog {

Value counttablerecords(Self&, Args) { return conn::unbuilt("counttablerecords"); }
Value execregex(Self&, Args) { return conn::unbuilt("execregex"); }
Value filternormalfields(Self&, Args) { return conn::unbuilt("filternormalfields"); }
Value filterrddfields(Self&, Args) { return conn::unbuilt("filterrddfields"); }
Value getfielddescription(Self&, Args) { return conn::unbuilt("getfielddescription"); }
Value getfieldsontrigger(Self&, Args) { return conn::unbuilt("getfieldsontrigger"); }
Value getindexdescription(Self&, Args) { return conn::unbuilt("getindexdescription"); }
Value getindexfields(Self&, Args) { return conn::unbuilt("getindexfields"); }
Value getinternaltablestruct(Self&, Args) { return conn::unbuilt("getinternaltablestruct"); }
Value gettabledescription(Self&, Args) { return conn::unbuilt("gettabledescription"); }
Value gettablenumberofinserts(Self&, Args) { return conn::unbuilt("gettablenumberofinserts"); }
Value gettablereccount(Self&, Args) { return conn::unbuilt("gettablereccount"); }
Value gettablesname(Self&, Args) { return conn::unbuilt("gettablesname"); }
Value gettablestruct(Self&, Args) { return conn::unbuilt("gettablestruct"); }
Value isallneededudfsinstalled(Self&, Args) { return conn::unbuilt("isallneededudfsinstalled"); }
Value isfieldinstru(Self&, Args) { return conn::unbuilt("isfieldinstru"); }
Value isfieldoftable(Self&, Args) { return conn::unbuilt("isfieldoftable"); }
Value isindex(Self&, Args) { return conn::unbuilt("isindex"); }
Value isindexoftable(Self&, Args) { return conn::unbuilt("isindexoftable"); }
Value islimbofield(Self&, Args) { return conn::unbuilt("islimbofield"); }
Value istable(Self&, Args) { return conn::unbuilt("istable"); }
Value istrigger(Self&, Args) { return conn::unbuilt("istrigger"); }
Value istriggeroftable(Self&, Args) { return conn::unbuilt("istriggeroftable"); }
Value isudf(Self&, Args) { return conn::unbuilt("isudf"); }
Value isview(Self&, Args) { return conn::unbuilt("isview"); }
Value iszmrddtable(Self&, Args) { return conn::unbuilt("iszmrddtable"); }
Value setfielddescription(Self&, Args) { return conn::unbuilt("setfielddescription"); }
Value setindexdescription(Self&, Args) { return conn::unbuilt("setindexdescription"); }
Value setrddfields(Self&, Args) { return conn::unbuilt("setrddfields"); }
Value settabledescription(Self&, Args) { return conn::unbuilt("settabledescription"); }

}  // namespace zmfb::catalog
