#!/usr/bin/env bash
# The real console under Xvfb with an accessibility bus: an operator logs in, a terminal
# starts a session on PC 3, and accessibility_bus.py, as a screen reader would, opens the
# board, stops the session, saves the bill and answers Yes. The database and the terminal
# must then show the session settled.
# Usage: accessibility_bus.sh TARVOQRB TARVOQRB-TERMINAL
set -euo pipefail
console=$1 terminal=$2
here=$(cd "$(dirname "$0")" && pwd)

TARVO_SCREEN=1366x768x24
TARVO_WITH_DBUS=1
. "$here/real_console.sh"

/usr/libexec/at-spi-bus-launcher --launch-immediately 2>/dev/null &
pids+=($!)
sleep 1

sqlite3 "$db" "CREATE TABLE sysusers (user TEXT, utype TEXT, keys TEXT);
               INSERT INTO sysusers VALUES ('ADMIN', 'Admin', 'Kape&Tinapay7');
               CREATE TABLE rates (RPH NUMBER, mina NUMBER, mint NUMBER);
               INSERT INTO rates VALUES (20, 10, 30);"
port=$(free_port)
QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 start_console "$console" "$port"
log_in admin 'kape&tinapay7'

printf 'send LOG ID-00003:REYES, ANA;3\nexpect Log Successful\nexpect CMTR\nexpect OFPS\n' > "$data/pc3.script"
wait_for_port "$port"
"$terminal" --port "$port" --pc 3 --bind 127.0.0.3 --timeout 60000 --script "$data/pc3.script" \
  > "$data/pc3.log" &
term=$!
for _ in $(seq 100); do
  [ "$(sqlite3 "$db" 'SELECT count(*) FROM templog WHERE aindex = 3' 2>/dev/null || echo 0)" = 1 ] && break
  sleep 0.2
done
# The statement goes to a PDF file, not to a printer this machine may have.
echo 'PDF=PRINTTO' >> "$data/TarvoQRB.INI"

timeout 120 /usr/bin/python3 "$here/accessibility_bus.py"
wait "$term" || fail "the terminal was not told CMTR and OFPS: $(cat "$data/pc3.log")"
[ "$(sqlite3 "$db" "SELECT count(*) FROM TmpRvnD WHERE TID = '3' AND rtype = 'GAMES_RENTALS'")" = 1 ] ||
  fail "no revenue row for PC 3"
[ "$(sqlite3 "$db" 'SELECT isout FROM templog WHERE aindex = 3')" = -1 ] || fail "the session row is still open"
echo "1 passed, 0 failed"
