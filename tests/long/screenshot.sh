#!/usr/bin/env bash
# Starts the real console on a fresh data folder under Xvfb, creates the first
# administrator and logs in through its own windows, connects two terminals (one of
# them starts a session), and saves a screenshot of the main window. Then reads the
# database from outside to check what the console wrote.
# Usage: screenshot.sh TARVOQRB TARVOQRB-TERMINAL OUTPUT-FOLDER
set -euo pipefail
console=$1 terminal=$2 out=$3

. "$(dirname "$0")/real_console.sh"

port=$(free_port)
mkdir -p "$out"
start_console "$console" "$port"

focus "Tarvo QRB - First administrator"
type_line ADMIN
type_line 'Kape&Tinapay7'
type_line 'Kape&Tinapay7'
focus "^First administrator$"
xdotool key Return

log_in admin 'kape&tinapay7' # found in any letter case, passwords too

cat > "$data/pc1.script" <<'SCRIPT'
send LOG ID-00001:DELA CRUZ, JUAN;1
expect Log Successful
wait 30000
SCRIPT
printf 'wait 30000\n' > "$data/pc2.script"
wait_for_port "$port"
"$terminal" --port "$port" --pc 1 --bind 127.0.0.1 --timeout 20000 --script "$data/pc1.script" > "$data/pc1.log" &
pids+=($!)
"$terminal" --port "$port" --pc 2 --bind 127.0.0.2 --timeout 20000 --script "$data/pc2.script" > "$data/pc2.log" &
pids+=($!)

for _ in $(seq 100); do
  online=$(sqlite3 "$db" 'SELECT count(*) FROM SrvIPTable WHERE Status <> 0' 2>/dev/null || echo 0)
  sessions=$(sqlite3 "$db" 'SELECT count(*) FROM templog WHERE aindex = 1' 2>/dev/null || echo 0)
  [ "$online" = 2 ] && [ "$sessions" = 1 ] && break
  sleep 0.2
done
[ "$online" = 2 ] || fail "expected 2 terminals on line, found $online"
[ "$sessions" = 1 ] || fail "expected the session of PC 1 in templog"
[ "$(sqlite3 "$db" "SELECT utype FROM sysusers WHERE user = 'ADMIN'")" = Admin ] ||
  fail "the first administrator was not stored"

sleep 1.5 # the terminal list refreshes on the main timer
main_window=$(xdotool search --onlyvisible --name "Tarvo QRB \[User" | head -n 1)
import -window "$main_window" "$out/main_window.png"
size=$(stat -c %s "$out/main_window.png")
[ "$size" -gt 20000 ] || fail "screenshot too small ($size bytes)"
echo "screenshot: $out/main_window.png ($size bytes)"

# A second console on the same data folder is refused once its operator has logged in.
QT_QPA_PLATFORM=xcb "$console" --data-dir "$data" --port 0 --odbc-ini "$data/odbc.ini" &
second=$!
pids+=("$second")
focus "Tarvo QRB - Operator Log-In"
type_line ADMIN
type_line 'Kape&Tinapay7'
focus "^Tarvo QRB$"
box=$(xdotool getwindowfocus)
[ -n "$(xdotool getwindowname "$box")" ] || fail "no refusal box"
xdotool key Return
status=0
wait "$second" || status=$?
[ "$status" -ne 0 ] || fail "the second console kept running"
kill -0 "${pids[0]}" || fail "the first console ended"
[ "$(sqlite3 "$db" 'SELECT count(*) FROM SrvIPTable WHERE Status <> 0')" = 2 ] ||
  fail "the first console lost its terminals"
echo "second instance refused (exit status $status)"
echo "1 passed, 0 failed"
