#!/usr/bin/env bash
# Lintian has no errors and no warnings for the packages that packages.sh left in ZMFB_PACKAGES.
. "${0%/*}/../support/common.sh"

command -v lintian >/dev/null || { echo "lintian is missing"; exit 77; }
said=$(lintian --allow-root --fail-on error,warning --tag-display-limit 0 "$ZMFB_PACKAGES"/*.deb 2>&1) || fail "$said"
same "what lintian says" "" "$said"
