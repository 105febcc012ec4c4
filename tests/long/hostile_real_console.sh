#!/usr/bin/env bash
# The real console, on a database made by the sqlite3 tool, under Xvfb: an operator logs
# in through its windows, a terminal starts a session, then bench_hostile attacks it from
# another process (10,000 silent connections, a flood of 60 kB notices, a slow reader).
# Afterwards the console must still answer, its database pass the integrity check, and
# the session's row be as it was.
# Usage: hostile_real_console.sh TARVOQRB TARVOQRB-TERMINAL BENCH_HOSTILE
set -euo pipefail
console=$1 terminal=$2 attack=$3

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

db="$data/TarvoQRBDB.MDB"
sqlite3 "$db" <<'SQL'
CREATE TABLE members (CID TEXT, LN TEXT, FN TEXT, MN TEXT, ADR TEXT, Disc NUMBER, Status TEXT,
  mdate DATE, Accuhrs NUMBER);
CREATE TABLE rates (RPH NUMBER, mina NUMBER, mint NUMBER);
CREATE TABLE Services (Description TEXT, Amount NUMBER);
CREATE TABLE Promos (ddtls TEXT, drange TEXT, dtype TEXT, Amount NUMBER);
CREATE TABLE Templog (CID TEXT, StartTime TEXT, aindex NUMBER, isout YESNO, cdtls TEXT,
  datelog DATE, TickStart TEXT, BkTick TEXT, pcstat TEXT, stopwatch TEXT);
CREATE TABLE SrvIPTable (TrmIP TEXT, PCno NUMBER, SKIndex NUMBER, Status YESNO);
CREATE TABLE TmpRvnD (Rdate DATE, rtype TEXT, Amount NUMBER, CID TEXT, TID TEXT, StartT TEXT,
  EndT TEXT, Tcons TEXT, Orno NUMBER, rdesc TEXT, subamnt TEXT, qty NUMBER);
CREATE TABLE sysusers (user TEXT, utype TEXT, keys TEXT);
INSERT INTO rates VALUES (20, 10, 30);
INSERT INTO sysusers VALUES ('ADMIN', 'Admin', 'Kape&Tinapay7');
SQL
printf '254=NOFPC\n1=PAGE\nPlease don'"'"'t Modify....\n' > "$data/TarvoQRB.INI"

port=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
QT_QPA_PLATFORM=xcb "$console" --data-dir "$data" --port "$port" --odbc-ini "$data/odbc.ini" &
pids+=($!)
console_pid=$!
focus "Tarvo QRB - Operator Log-In"
type_line admin
type_line 'kape&tinapay7'
focus "Tarvo QRB \[User"

printf 'send LOG ID-00001:DELA CRUZ, JUAN;1\nexpect Log Successful\nwait 120000\n' > "$data/pc1.script"
wait_for_port "$port"
"$terminal" --port "$port" --pc 1 --bind 127.0.0.1 --timeout 20000 --script "$data/pc1.script" > "$data/pc1.log" &
pids+=($!)
for _ in $(seq 100); do
  [ "$(sqlite3 "$db" 'SELECT count(*) FROM templog WHERE aindex = 1' 2>/dev/null || echo 0)" = 1 ] && break
  sleep 0.2
done
row_before=$(sqlite3 "$db" 'SELECT CID, StartTime, aindex, isout, pcstat, stopwatch FROM templog')
[ -n "$row_before" ] || fail "the session of PC 1 did not start"

"$attack" --port "$port" --data "$data" --pid "$console_pid" | tee "$data/attack.log"

kill -0 "$console_pid" || fail "the console ended under attack"
printf 'rts\nexpect SRPH\nquit\n' > "$data/after.script"
"$terminal" --port "$port" --pc 3 --bind 127.0.0.3 --timeout 50 --script "$data/after.script" \
  > "$data/after.log" || fail "no rates reply within 50 ms after the attacks"
[ "$(sqlite3 "$db" 'PRAGMA integrity_check')" = ok ] || fail "the database is damaged"
row_after=$(sqlite3 "$db" 'SELECT CID, StartTime, aindex, isout, pcstat, stopwatch FROM templog')
[ "$row_after" = "$row_before" ] || fail "the session's row changed: $row_before -> $row_after"
echo "1 passed, 0 failed"
