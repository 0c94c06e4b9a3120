#include "conn/methods.h"

namespace zmfb::conn {

Value access_bconn(Self& self, Args) { return var(self, Var::bconn); }
Value access_dbhndl(Self& self, Args) { return var(self, Var::dbhndl); }
Value access_sdbname(Self& self, Args) { return var(self, Var::sdbname); }
Value access_srolename(Self& self, Args) { return var(self, Var::srolename); }
Value access_susername(Self& self, Args) { return var(self, Var::susername); }

Value assign_bconn(Self& self, Args args) { return var(self, Var::bconn) = args[0]; }
Value assign_dbhndl(Self& self, Args args) { return var(self, Var::dbhndl) = args[0]; }

}  // namespace zmfb::conn
