/// The names of all methods, in the order of the method table.
///
/// A MethodName made of a literal is looked up here when the code is compiled: a name that is not listed does not
/// compile, and one that is costs an index into the table. Each name here has its row in the methods.h of the
/// folder that has its routine; conn/method_table.cpp joins the rows and holds both lists against each other.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace zmfb {

/// Byte order. A property that can be assigned stands twice: its access row, then its assign row.
inline constexpr auto method_names = std::to_array<std::string_view>({
    "addfield", "addlimbofield", "alterfield", "announcealias", "applymatrix", "assemblestatement", "axit",
    "bconn", "bconn", "bringdbf", "cachedupdate", "checkmatrix", "clearsystemtables", "closealltables",
    "commitchanges", "counttablerecords", "createtable", "createtableexternal", "createtableofflocks",
    "createtableofopn", "createtableofrlocks", "createview", "dbhndl", "dbhndl", "deleteallrecords",
    "deleterecord", "disconnect", "dropfield", "dropgenerator", "dropindex", "dropindexbasedonfield",
    "droponlytable", "droptable", "droptrigger", "droptriggerbasedonfield", "dropview",
    "dropviewsfromtable", "evalmeth", "execregex", "executequery", "executeudfskippad", "executeupdate",
    "exiletable", "existsanotheruserflock", "existsanotheruserrlocks", "existsuserrlocks",
    "extracmatrixoftable", "extractmatrix", "fclsfile", "fcrtfile", "filternormalfields", "filterrddfields",
    "fopnfile", "getapprecnofromarea", "getdatabasename", "getfielddescription", "getfieldsontrigger",
    "getfilename", "getfirstrows", "getflockareaid", "getfullpathdatfile", "getglbskipcachesize",
    "getglbskipmode", "gethostname", "getindexdescription", "getindexfields", "getinternaltablestruct",
    "getipaddress", "getlockedrecords", "getlockedtables", "getloglevel", "getpid", "getrlockareaid",
    "getrow", "gettabledescription", "gettablenumberofinserts", "gettablereccount", "gettablesname",
    "gettablestruct", "getuniqueareaid", "grantaccess", "hasfieldnamechanged", "hidegreetscr", "init",
    "internalselect", "isallneededudfsinstalled", "isconnected", "iscurseson", "isfielddropped",
    "isfieldinstru", "isfieldoftable", "isfieldstructurechanged", "isfieldstructuredifferent",
    "isfirebirdarea", "isindex", "isindexoftable", "islimbofield", "isrddactive", "isrecordlocked",
    "isrecordlockedbyanotheruser", "isrecordlockedbyuser", "istable", "istableinexclusivemode",
    "istableinuse", "istablelockedbyuser", "istableusedbyarea", "istrigger", "istriggeroftable", "isudf",
    "isvalidfielddescriptor", "isview", "iszmrddtable", "looptest", "nomethod", "releaselocks",
    "removealias", "removefilenameext", "removezerobytes", "renamefield", "restorepreviousrdd",
    "samefieldname", "savepreviousrdd", "sdbname", "setfielddescription", "setfieldposition",
    "setfullpathdatfile", "setglbskipcachesize", "setglbskipmode", "setibrdd", "setindexdescription",
    "setloglevel", "setrddactive", "setrddfields", "setrecordaslocked", "setrecordasunlocked",
    "settableaslocked", "settableasunlocked", "settabledescription", "settableusedbyarea", "showgreetscr",
    "srolename", "starttransaction", "susername", "toarray", "unlockallrecords", "writelog",
});

class MethodName {
  public:
    consteval MethodName(const char* name) : row_(find(name)) {}  // NOLINT(google-explicit-constructor)
    [[nodiscard]] constexpr std::size_t row() const { return row_; }

  private:
    static consteval std::size_t find(std::string_view name) {
        const auto found = std::lower_bound(method_names.begin(), method_names.end(), name);
        if (found == method_names.end() || *found != name) throw "no method of that name";
        return static_cast<std::size_t>(found - method_names.begin());
    }

    std::size_t row_;
};

}  // namespace zmfb
