#!/usr/bin/env bash
# A full café on the real console: 254 terminals (NOFPC 254) connected at once, each
# starting a session and then asking for the rates every second, for MINUTES minutes
# (10 by default) while the operator's board is open. The console must answer the
# operator within 100 ms throughout, answer every terminal, keep every session in the
# database, and not grow in memory after the first minute.
# Usage: load_real_console.sh TARVOQRB TARVOQRB-TERMINAL [MINUTES]
set -euo pipefail
console=$1 terminal=$2 minutes=${3:-10}
here=$(cd "$(dirname "$0")" && pwd)

TARVO_SCREEN=1366x768x24
TARVO_WITH_DBUS=1
. "$here/real_console.sh"

start_accessibility_bus
make_database 254
port=$(free_port)
QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 start_console "$console" "$port"
log_in admin 'kape&tinapay7'
wait_for_port "$port"

rss() { awk '/^VmRSS/ {print $2}' "/proc/$console_pid/status"; }
seconds=$((minutes * 60))
"$terminal" --port "$port" --swarm 254 --swarm-every 1000 --swarm-seconds "$seconds" \
  --timeout 30000 > "$data/swarm.log" 2>&1 &
swarm=$!
pids+=($swarm)
/usr/bin/python3 "$here/responsiveness.py" "$((seconds - 20))" 100 > "$data/operator.log" 2>&1 &
operator=$!
pids+=($operator)

sleep 60
rss_first=$(rss)
sleep $((seconds - 60))
rss_last=$(rss)
operator_ok=0
wait "$operator" || operator_ok=$?
wait "$swarm" || true
grep -hE 'swarm: |swarm (replies|sessions)|^operator: ' "$data/swarm.log" "$data/operator.log" || true
echo "console memory: $rss_first kB after the first minute, $rss_last kB at the end"

grep -q 'swarm: 254 of 254 terminals accepted' "$data/swarm.log" || fail "not every terminal was accepted"
grep -q 'swarm sessions: 254 of 254 logged on' "$data/swarm.log" || fail "not every session started"
missed=$(sed -n 's/.*; \([0-9]*\) asked and not answered.*/\1/p' "$data/swarm.log")
[ "${missed:-1}" = 0 ] || fail "$missed rates requests were not answered within a second"
[ "$operator_ok" = 0 ] || fail "the operator waited 100 ms or more: $(tail -n 1 "$data/operator.log")"
[ "$(sqlite3 -cmd ".timeout 10000" "$db" 'SELECT count(*) FROM templog WHERE isout = 0')" = 254 ] ||
  fail "sessions are missing from the database"
[ $((rss_last - rss_first)) -lt 8192 ] || fail "the console grew from $rss_first kB to $rss_last kB"
[ "$(sqlite3 -cmd ".timeout 10000" "$db" 'PRAGMA integrity_check')" = ok ] || fail "the database is damaged"
echo "1 passed, 0 failed"
