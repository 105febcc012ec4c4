#!/usr/bin/env bash
# The real console, on a database made by the sqlite3 tool, under Xvfb: an operator logs
# in through its windows, a terminal starts a session, then an attack program attacks it
# from another process: bench_hostile (10,000 silent connections, a flood of 60 kB
# notices, a slow reader) or bench_storm (2,000 connections held, 40,000 dropped).
# Afterwards the console must still answer, its database pass the integrity check, and
# the session's row be as it was.
# Usage: hostile_real_console.sh TARVOQRB TARVOQRB-TERMINAL ATTACK-PROGRAM
set -euo pipefail
console=$1 terminal=$2 attack=$3

. "$(dirname "$0")/real_console.sh"

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

port=$(free_port)
start_console "$console" "$port"
log_in admin 'kape&tinapay7'

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

"$attack" --port "$port" --data "$data" --pid "$console_pid" | tee "$data/attack.log" ||
  fail "$(basename "$attack") reports a failure"

kill -0 "$console_pid" || fail "the console ended under attack"
# The rates reply after the attacks, as the attacking terminal timed it: under 50 ms.
median=$(sed -n 's/^afterwards:.* p50 \([0-9.]*\) us.*/\1/p' "$data/attack.log")
[ -n "$median" ] || fail "no rates reply after the attacks"
awk -v us="$median" 'BEGIN { exit !(us < 50000) }' || fail "rates reply takes $median us"
printf 'rts\nexpect SRPH\nquit\n' > "$data/after.script"
"$terminal" --port "$port" --pc 3 --bind 127.0.0.3 --script "$data/after.script" \
  > "$data/after.log" || fail "a new terminal is not answered after the attacks"
[ "$(sqlite3 "$db" 'PRAGMA integrity_check')" = ok ] || fail "the database is damaged"
row_after=$(sqlite3 "$db" 'SELECT CID, StartTime, aindex, isout, pcstat, stopwatch FROM templog')
[ "$row_after" = "$row_before" ] || fail "the session's row changed: $row_before -> $row_after"
echo "1 passed, 0 failed"
