#include "conn/unbuilt.h"

#include "sql/methods.h"

namespace zmfb::sql {

Value assemblestatement(Self&, Args) { return conn::unbuilt("assemblestatement"); }
Value cachedupdate(Self&, Args) { return conn::unbuilt("cachedupdate"); }
Value commitchanges(Self&, Args) { return conn::unbuilt("commitchanges"); }
Value executequery(Self&, Args) { return conn::unbuilt("executequery"); }
Value executeudfskippad(Self&, Args) { return conn::unbuilt("executeudfskippad"); }
Value executeupdate(Self&, Args) { return conn::unbuilt("executeupdate"); }
Value getfirstrows(Self&, Args) { return conn::unbuilt("getfirstrows"); }
Value getrow(Self&, Args) { return conn::unbuilt("getrow"); }
Value internalselect(Self&, Args) { return conn::unbuilt("internalselect"); }
Value looptest(Self&, Args) { return conn::unbuilt("looptest"); }
Value starttransaction(Self&, Args) { return conn::unbuilt("starttransaction"); }

}  // namespace zmfb::sql
