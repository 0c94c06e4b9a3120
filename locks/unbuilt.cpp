#include "conn/unbuilt.h"
#include "locks/methods.h"

namespace zmfb::locks {

Value clearsystemtables(Self&, Args) { return conn::unbuilt("clearsystemtables"); }
Value createtableofflocks(Self&, Args) { return conn::unbuilt("createtableofflocks"); }
Value createtableofopn(Self&, Args) { return conn::unbuilt("createtableofopn"); }
Value createtableofrlocks(Self&, Args) { return conn::unbuilt("createtableofrlocks"); }
Value existsanotheruserflock(Self&, Args) { return conn::unbuilt("existsanotheruserflock"); }
Value existsanotheruserrlocks(Self&, Args) { return conn::unbuilt("existsanotheruserrlocks"); }
Value existsuserrlocks(Self&, Args) { return conn::unbuilt("existsuserrlocks"); }
Value getapprecnofromarea(Self&, Args) { return conn::unbuilt("getapprecnofromarea"); }
Value getflockareaid(Self&, Args) { return conn::unbuilt("getflockareaid"); }
Value gethostname(Self&, Args) { return conn::unbuilt("gethostname"); }
Value getipaddress(Self&, Args) { return conn::unbuilt("getipaddress"); }
Value getlockedrecords(Self&, Args) { return conn::unbuilt("getlockedrecords"); }
Value getlockedtables(Self&, Args) { return conn::unbuilt("getlockedtables"); }
Value getpid(Self&, Args) { return conn::unbuilt("getpid"); }
Value getrlockareaid(Self&, Args) { return conn::unbuilt("getrlockareaid"); }
Value getuniqueareaid(Self&, Args) { return conn::unbuilt("getuniqueareaid"); }
Value isrecordlocked(Self&, Args) { return conn::unbuilt("isrecordlocked"); }
Value isrecordlockedbyanotheruser(Self&, Args) { return conn::unbuilt("isrecordlockedbyanotheruser"); }
Value isrecordlockedbyuser(Self&, Args) { return conn::unbuilt("isrecordlockedbyuser"); }
Value istableinexclusivemode(Self&, Args) { return conn::unbuilt("istableinexclusivemode"); }
Value istableinuse(Self&, Args) { return conn::unbuilt("istableinuse"); }
Value istablelockedbyuser(Self&, Args) { return conn::unbuilt("istablelockedbyuser"); }
Value istableusedbyarea(Self&, Args) { return conn::unbuilt("istableusedbyarea"); }
Value releaselocks(Self&, Args) { return conn::unbuilt("releaselocks"); }
Value setrecordaslocked(Self&, Args) { return conn::unbuilt("setrecordaslocked"); }
Value setrecordasunlocked(Self&, Args) { return conn::unbuilt("setrecordasunlocked"); }
Value settableaslocked(Self&, Args) { return conn::unbuilt("settableaslocked"); }
Value settableasunlocked(Self&, Args) { return conn::unbuilt("settableasunlocked"); }
Value settableusedbyarea(Self&, Args) { return conn::unbuilt("settableusedbyarea"); }
Value unlockallrecords(Self&, Args) { return conn::unbuilt("unlockallrecords"); }

}  // namespace zmfb::locks
