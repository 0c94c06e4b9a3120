#!/usr/bin/env bash
# The shared library exports what the public headers declare, and nothing else.
. "${0%/*}/../support/common.sh"

library=$ZMFB_BUILD/$ZMFB_LIBDIR/libzmfbconn.so
headers=$ZMFB_SOURCE/include
nm -D --defined-only "$library" | awk '$2 != "A" {print $3}' | sed 's/@.*//' | sort -u >symbols

# C: the very functions that the header declares.
"$CC" -E -P -I "$headers" -I "$ZMFB_BUILD/include/generated" "$headers/zmfbconn.h" | grep -oE '\bzmfb_[a-z_]+\(' | tr -d '(' | sort -u >declared
grep '^zmfb_' symbols >exported_c
diff declared exported_c || fail "the C interface and its header differ"
[ "$(wc -l <declared)" -ge 30 ] || fail "only $(wc -l <declared) functions are declared"

# C++: names of the public headers, whatever class they are in.
grep -v '^zmfb_' symbols | c++filt | sed -E 's/\[abi:cxx11\]//g' >exported_cpp
[ "$(wc -l <exported_cpp)" -ge 150 ] || fail "only $(wc -l <exported_cpp) C++ symbols are exported"
grep -q '^zmfb::zmFBConn::call_with(' exported_cpp || fail "the connection object is not exported"
if grep -vE '^((vtable|typeinfo|typeinfo name) for )?zmfb::((host|dbf)::)?[A-Za-z~]' exported_cpp; then
    fail "these symbols are exported and are none of the public namespaces'"
fi
cat "$headers"/zmfbconn/*.h "$headers"/zmfbconn/{host,dbf}/*.h | grep -oE '[A-Za-z_0-9]+' | sort -u >words
sed -E 's/^(vtable|typeinfo|typeinfo name) for //; s/<.*//; s/ ?\(.*//; s/operator[^a-z].*/operator/; s/.*:://; s/^~//' \
    exported_cpp | sort -u >names
comm -23 names words >unknown
[ ! -s unknown ] || fail "exported, but in no public header: $(tr '\n' ' ' <unknown)"

# Nothing that the list of released symbols has is gone, and nothing is there that it does not have. A new one goes in
# with the version that brings it; one that is gone or has changed takes a new major version. Sizes and numbers of 64 bits
# have other types on 32 bits, and what has them in its name another name there.
those='/\blong\b|[0-9]ul\b/s/\(c\+\+/(arch-bits=64|c++/'
[ -z "${ZMFB_ARCHITECTURE-}" ] || those='s/\(c\+\+/(arch-bits=32|c++/'
mkdir debian
cp "$ZMFB_SOURCE"/debian/{control,changelog} debian
list=$ZMFB_SOURCE/debian/libzmfbconn${ZMFB_VERSION%%.*}.symbols
if ! dpkg-gensymbols -plibzmfbconn"${ZMFB_VERSION%%.*}" ${ZMFB_ARCHITECTURE:+-a"$ZMFB_ARCHITECTURE"} -c4 \
    -e"$library" -I"$list" -O/dev/null >changes 2>&1; then
    fail "$(c++filt <changes)
What is new belongs in debian/${list##*/} like this:
$(c++filt <changes | sed -nE "s/^\+( zmfb_\w+@\w+) .*/\1 $ZMFB_VERSION/p; s/^\+ ([^#]*::[^@]*@\w+) .*/ (c++)\"\1\" $ZMFB_VERSION/p" |
    sed -E "$those")"
fi

# The name that programs are linked to.
same soname "libzmfbconn.so.${ZMFB_VERSION%%.*}" \
    "$(readelf -d "$library" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')"
same file "libzmfbconn.so.$ZMFB_VERSION" "$(basename "$(readlink -f "$library")")"
