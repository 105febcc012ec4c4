#!/usr/bin/env bash
# Starts the real console on a fresh data folder under Xvfb, creates the first
# administrator and logs in through its own windows, connects two terminals (one of
# them starts a session), and saves a screenshot of the main window. Then reads the
# database from outside to check what the console wrote.
# Usage: screenshot.sh TARVOQRB TARVOQRB-TERMINAL OUTPUT-FOLDER
set -euo pipefail
console=$1 terminal=$2 out=$3

if [ "${TARVO_UNDER_XVFB:-}" != 1 ]; then
  exec env TARVO_UNDER_XVFB=1 xvfb-run -a -s "-screen 0 1280x800x24" "$0" "$@"
fi

data=$(mktemp -d)
pids=()
cleanup() {
  for p in "${pids[@]}"; do kill "$p" 2>/dev/null || true; done
  rm -rf "$data"
}
trap cleanup EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

# A window by title, focused for typing; there is no window manager to do it.
focus() {
  local id
  id=$(timeout 20 xdotool search --sync --onlyvisible --name "$1" | head -n 1) ||
    fail "no window titled '$1'"
  xdotool windowfocus --sync "$id"
}
# The console listens once its main window is up; a busy machine may take a while.
wait_for_port() {
  for _ in $(seq 150); do
    (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null && return 0
    sleep 0.2
  done
  fail "the console does not listen on port $1"
}
type_line() { xdotool type --delay 15 "$1"; xdotool key Return; }

port=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
mkdir -p "$out"
QT_QPA_PLATFORM=xcb "$console" --data-dir "$data" --port "$port" --odbc-ini "$data/odbc.ini" &
pids+=($!)

focus "Tarvo QRB - First administrator"
type_line ADMIN
type_line 'Kape&Tinapay7'
type_line 'Kape&Tinapay7'
focus "^First administrator$"
xdotool key Return

focus "Tarvo QRB - Operator Log-In"
type_line admin                     # found in any letter case
type_line 'kape&tinapay7'           # passwords too
focus "Tarvo QRB \[User"

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

db="$data/TarvoQRBDB.MDB"
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
