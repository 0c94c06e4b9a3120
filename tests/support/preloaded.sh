#!/usr/bin/env bash
# preloaded.sh COMMAND... runs a program with the libraries preloaded that ZMFB_PRELOAD names.
[ -z "${ZMFB_PRELOAD:-}" ] || export LD_PRELOAD=$ZMFB_PRELOAD
exec "$@"
