#!/bin/sh
# Runs lttng-sessiond for as long as standard input stays open, so that the daemon ends with the test that started this
# script, however that test ends. Writes "ready" once the daemon takes requests; ends without a word if it can't start.
#
#   sessionDaemon.sh [OPTION of lttng-sessiond]...
ready=false
trap 'ready=true; echo ready' USR1

# The daemon must not hold the pipes, or their other ends would never see them close.
lttng-sessiond --no-kernel --sig-parent "$@" </dev/null >/dev/null 2>&1 &
daemon=$!
exec 3<&0
(cat <&3; kill "$daemon") >/dev/null 2>&1 &

# A signal that has a trap ends the wait; the daemon is over only when it can't be waited for any more.
while kill -0 "$daemon" 2>/dev/null; do
  wait "$daemon"
done
$ready
