/// Moves in the table of the current work area, its filter, its orders, and what goes through its records.
///
/// Where no table is open in the area, what moves or changes something raises "Work area not in use"; what
/// only asks answers .F., 0, "" or NIL.
#pragma once

#include <cstdint>

#include "value.h"

#pragma GCC visibility push(default)

namespace zmfb::host {

/// DBGOTOP(): to the first record of the order that the filter lets through; to the end when there is none.
void dbgotop();
/// DBGOBOTTOM(): to the last one; to the end when there is none.
void dbgobottom();
/// DBSKIP(count): forward by `count` records that the filter lets through, or back when it is negative.
/// Behind the last one eof() holds; before the first one bof(), and the first one is the current record. By
/// 0: reads the record anew.
void dbskip(std::int64_t count = 1);
/// DBGOTO(record): to the record of that number, whether the filter lets it through or not; to the end when
/// there is none.
void dbgoto(std::int64_t record);

/// BOF(): whether a skip went to before the first record; also where there is none at all.
bool bof();
/// EOF(): whether there is no current record, behind the last one.
bool eof();
/// RECNO(): the number of the current record; at the end the highest and one more.
std::int64_t recno();
/// LASTREC(): the highest number of a record.
std::int64_t lastrec();
/// RECCOUNT(): how many records the table has, without regard to the filter.
std::int64_t reccount();
/// FOUND(): whether the last DBSEEK, LOCATE or CONTINUE found a record; .F. after any other move.
bool found();

/// DBSETFILTER(block, condition): from here on moves meet only records for which the server says yes to
/// `condition`, a text in SQL, and `block`, evaluated on each of what that leaves, gives .T.. Either may be
/// left out. A driver without conditions needs the block, and keeps the text only. The current record stays.
/// False, and no filter, when the driver refuses the condition.
bool dbsetfilter(const Value& block, const Value& condition = {});
/// DBCLEARFILTER(): moves meet all records.
void dbclearfilter();
/// DBFILTER(): the filter's condition as it was given, "" when there is none.
Value dbfilter();

/// DBEVAL(block [, for [, while [, next [, record [, rest]]]]]): evaluates `block` on each record for which
/// `for` gives .T., from the first one; from the current one with `while`, which ends it by anything but .T.,
/// with `next`, the number of records looked at, or with `rest` .T.; only on the one of number `record` where
/// that is given. It stops on the last record that was looked at, or at the end.
void dbeval(const Value& block, const Value& for_block = {}, const Value& while_block = {},
            const Value& next = {}, const Value& record = {}, const Value& rest = {});
/// __DBLOCATE(for [, while [, next [, record [, rest]]]]): to the first record of those that dbeval() would
/// look at for which `for` gives .T.; returns found().
bool dblocate(const Value& for_block, const Value& while_block = {}, const Value& next = {},
              const Value& record = {}, const Value& rest = {});
/// __DBCONTINUE(): to the next record for which the block of the last dblocate() of this area gives .T.;
/// returns found(). Nothing moves when there was none.
bool dbcontinue();

/// ORDCREATE(name, expression [, unique]): makes an order by a key, lets the moves follow it, and goes to its
/// top; with `unique` the order has of all records with the same key the first one only. Whether that went
/// well.
bool ordcreate(const Value& name, const Value& expression, const Value& unique = {});
/// ORDSETFOCUS([order]): the name of the order that the moves follow, "" for that of the record numbers. With
/// `order`, a name or a number, they follow that one from here on; "" and 0 are that of the record numbers.
/// One that the table does not have is raised (gencode no_order).
Value ordsetfocus(const Value& order = {});
/// ORDLISTADD(name): the orders of a table are all there from its opening on; this lets the moves follow
/// `name` when they follow none yet. Whether the table has it.
bool ordlistadd(const Value& name);
/// DBSETINDEX([name]): as ORDLISTADD(); without a name nothing. A table without orders has no index files
/// either, which is raised.
void dbsetindex(const Value& files = {});
/// ORDLISTCLEAR(): lets the moves follow the record numbers; no order is removed.
void ordlistclear();
/// ORDLISTREBUILD(): builds the orders of the table anew.
bool ordlistrebuild();
/// ORDDESTROY(order): removes an order, for all who use the table. Whether that went well.
bool orddestroy(const Value& order);
/// ORDNAME([order]): the name of the order of that number, of the present one without; "" for none.
Value ordname(const Value& order = {});
/// ORDNUMBER([name]): the number of the order of that name, of the present one without; 0 for none.
std::int64_t ordnumber(const Value& name = {});
/// INDEXORD(): the number of the order that the moves follow, 0 for that of the record numbers.
std::int64_t indexord();
/// INDEXKEY(order): the expression of that order's key as it was given, of the present one for 0; "" for
/// none.
Value indexkey(const Value& order = 0);
/// ORDKEYNO(): the place of the current record in the present order, from 1; 0 at the end.
std::int64_t ordkeyno();

/// DBSEEK(key [, soft [, last]]): to the first record of the present order whose key is `key` or, for a text,
/// begins with it, with `last` to the last one of these. Without one: with `soft`, or SET SOFTSEEK without
/// that, to the next record of the order, else to the end. Returns found(). Without an order it is raised.
bool dbseek(const Value& key, const Value& soft = {}, const Value& last = {});

}  // namespace zmfb::host

#pragma GCC visibility pop
