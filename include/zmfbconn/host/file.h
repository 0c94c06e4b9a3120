/// Low-level files by numeric handle. -1 is "no file"; ferror() tells how the last call went.
///
/// Handles are those of this runtime alone: a number that none of these calls gave out is an invalid handle
/// (6), so no descriptor of another library can be closed or written through them.
#pragma once

#include "value.h"

#pragma GCC visibility push(default)

namespace zmfb::host {

/// FERROR(): 0 when the last call of this header but file() and tempfilename() succeeded; else 1 no such lock
/// mode, 2 not found, 3 path not found, 4 too many files, 5 access denied, 6 invalid handle, 25 seek, 29
/// write, 30 read, 32 sharing violation, 33 lock violation, 38 end of file (freadtxt).
Value ferror();
/// FOPEN(name [, mode]): 0 read, 1 write, 2 both; sharing bits are accepted and have no meaning here. A
/// folder is refused (5). A name that is no text raises an argument error.
Value fopen(const Value& name, const Value& mode = {});
/// FCREATE(name [, attribute]): creates or empties the file and opens it for reading and writing. Attribute
/// 0: an ordinary file; a number of three octal digits such as 666: these permissions whatever the umask,
/// unless the file is another user's; 1: a new file is read-only. Does not follow a symbolic link that
/// belongs to another user, root aside (5). A name that is no text raises an argument error.
Value fcreate(const Value& name, const Value& attribute = {});
/// FCLOSE(h): whether it was open.
Value fclose(const Value& handle);
/// FREAD(h, buffer, n): reads up to n bytes into the front of `buffer`, a text of at least n bytes; the rest
/// of it keeps. Returns the number of bytes read; 0 and nothing read when `buffer` is shorter or no text.
Value fread(const Value& handle, Value& buffer, const Value& n);
/// FWRITE(h, s [, n]): writes s, or its first n bytes, and returns the number of bytes written, fewer when
/// the disk is full; "" cuts the file off at the current position.
Value fwrite(const Value& handle, const Value& s);
/// FWRITE(h, s, n).
Value fwrite(const Value& handle, const Value& s, const Value& n);
/// FSEEK(h, offset [, origin]): 0 from the start, 1 from here, 2 from the end; returns the new position,
/// which may lie beyond the end. One before the start is refused (25): the position stays and is returned.
Value fseek(const Value& handle, const Value& offset, const Value& origin = {});
/// FREADTXT(h): the next line of a text file without its LF or CR LF. At the end of the file "" and file
/// error 38; a last line without a line end is still a line.
Value freadtxt(const Value& handle);
/// FLOCKF(h, mode): 0 unlocks, 1 locks for reading, 2 for writing, over the whole file, without waiting. 0
/// when granted, -1 otherwise. The lock also holds against other handles of the same process.
Value flockf(const Value& handle, const Value& mode);
/// FILE(name): whether a file of that name exists.
Value file(const Value& name);
/// FERASE(name): 0, or -1.
Value ferase(const Value& name);
/// TEMPFILENAME([directory [, prefix]]): the path of a file that does not exist, by default under TMPDIR or
/// /tmp, with an unpredictable name. Does not create it.
Value tempfilename(const Value& directory = {}, const Value& prefix = {});

}  // namespace zmfb::host

#pragma GCC visibility pop
