#!/usr/bin/env bash
# The real console with 24 sessions, twelve running and twelve paused, killed with SIGKILL
# and started again on the same day. Every session must come back as it stood (customer,
# state, banked time), a running one must have counted the time the console was down, and
# bills saved while the console is killed must be whole or not there at all, never half
# and never twice.
# Usage: crash_recovery.sh TARVOQRB TARVOQRB-TERMINAL
set -euo pipefail
console=$1 terminal=$2
here=$(cd "$(dirname "$0")" && pwd)

TARVO_SCREEN=1366x768x24
TARVO_WITH_DBUS=1
. "$here/real_console.sh"

start_accessibility_bus
make_database 24 PDF=PRINTTO
port=$(free_port)

declare -A term
# Puts PC N back on line with a script of its own; it stays until killed. The gap keeps
# its identification and its log-in two messages while the console is busy.
connect() {
  "$terminal" --port "$port" --pc "$1" --bind "127.0.0.$1" --timeout 60000 --gap 400 \
    --script "$data/pc$1.script" > "$data/pc$1.$2.log" 2>&1 &
  term[$1]=$!
  pids+=($!)
}
sessions() {
  sqlite3 -cmd ".timeout 10000" "$db" 'SELECT aindex, CID, StartTime, TickStart, BkTick, pcstat FROM templog
                 WHERE isout = 0 ORDER BY aindex'
}
run_console() {
  QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 start_console "$console" "$port"
  log_in admin 'kape&tinapay7'
  wait_for_port "$port"
}

run_console
for pc in $(seq 24); do
  printf 'send LOG ID-%05d:CUSTOMER %d, PC;%d\nexpect Log Successful\nwait 600000\n' \
    "$pc" "$pc" "$pc" > "$data/pc$pc.script"
  connect "$pc" first
  # One at a time: a console busy starting sessions could read a terminal's
  # identification and log-in as one message, which is how the protocol reads them.
  for _ in $(seq 100); do grep -q 'ok: Log Successful' "$data/pc$pc.first.log" && break; sleep 0.1; done
  [ "$pc" = 12 ] && started=$(date +%s%N)
done
wait_for_row 'SELECT count(*) FROM templog WHERE isout = 0' 24 "not every PC started a session"

# A lost connection pauses: PCs 13 to 24 are paused, with what they had banked.
for pc in $(seq 13 24); do kill "${term[$pc]}"; done
wait_for_row "SELECT count(*) FROM templog WHERE isout = 0 AND BkTick + 0 > 0" 12 \
  "the lost connections did not pause twelve sessions"
sleep 1
before=$(sessions)

kill -9 "$console_pid"
for pc in $(seq 12); do kill "${term[$pc]}" 2>/dev/null || true; done
sleep 3 # the café goes on while the console is down

run_console
[ "$(sessions)" = "$before" ] || fail "the sessions changed across the restart:
$before
--- after:
$(sessions)"

# The paused PCs are told so when they come back; the running ones are left running.
for pc in $(seq 24); do
  if [ "$pc" -gt 12 ]; then
    printf 'expect PAUS\nwait 600000\n' > "$data/pc$pc.script"
  else
    printf 'wait 600000\n' > "$data/pc$pc.script"
  fi
  connect "$pc" second
done
for pc in $(seq 13 24); do
  for _ in $(seq 100); do grep -q 'ok: PAUS' "$data/pc$pc.second.log" && break; sleep 0.2; done
  grep -q 'ok: PAUS' "$data/pc$pc.second.log" || fail "PC $pc was not told it is paused"
done

# A running session counted the time the console was down: losing PC 12's connection
# now banks the whole time since it started, to within a second and a half.
kill "${term[12]}"
wait_for_row "SELECT BkTick + 0 > 0 FROM templog WHERE aindex = 12 AND isout = 0" 1 \
  "PC 12's session was not running after the restart"
elapsed=$(( ($(date +%s%N) - started) / 1000000 ))
banked=$(sqlite3 -cmd ".timeout 10000" "$db" "SELECT BkTick FROM templog WHERE aindex = 12 AND isout = 0")
[ $(( banked - elapsed )) -lt 1500 ] && [ $(( elapsed - banked )) -lt 1500 ] ||
  fail "PC 12 banked $banked ms of $elapsed ms since it started"

# Bills saved while the console is killed, from at once to 2 s after the operator's Yes.
# A kill can land before, during or after the save; either the bill is whole (revenue
# row and closed session) or the session is still open without a revenue row. After 2 s
# the bill must have been saved.
for try in "1 0" "2 120" "3 140" "4 170" "5 200" "6 2000"; do
  set -- $try
  timeout 120 /usr/bin/python3 "$here/accessibility_bus.py" "$1" "$console_pid" "$2"
  wait "$console_pid" 2>/dev/null || true
  run_console
  rows=$(sqlite3 -cmd ".timeout 10000" "$db" "SELECT count(*) FROM TmpRvnD WHERE TID = '$1'")
  open=$(sqlite3 -cmd ".timeout 10000" "$db" "SELECT count(*) FROM templog WHERE aindex = $1 AND isout = 0")
  case "$rows$open" in
    10) echo "PC $1: killed $2 ms after Yes, the bill was saved whole" ;;
    01) echo "PC $1: killed $2 ms after Yes, the session is still open, unbilled" ;;
    *) fail "PC $1 is half billed: $rows revenue rows, $open open sessions" ;;
  esac
  [ "$2" -lt 2000 ] || [ "$rows" = 1 ] || fail "PC $1's bill was not saved within 2 s"
done

# No revenue row doubled by the restarts, nothing else touched, the file whole.
[ "$(sqlite3 -cmd ".timeout 10000" "$db" "SELECT count(*) FROM TmpRvnD")" = \
  "$(sqlite3 -cmd ".timeout 10000" "$db" "SELECT count(*) FROM templog WHERE isout <> 0")" ] ||
  fail "revenue rows and billed sessions differ"
[ "$(sqlite3 -cmd ".timeout 10000" "$db" 'SELECT count(*) FROM templog WHERE isout = 0')" -ge 18 ] ||
  fail "sessions were lost"
[ "$(sqlite3 -cmd ".timeout 10000" "$db" 'PRAGMA integrity_check')" = ok ] || fail "the database is damaged"
echo "1 passed, 0 failed"
