# Shared by the long tests that drive the real console under Xvfb: sourced, never run.
# It restarts the calling script under Xvfb (and, with TARVO_WITH_DBUS=1, on a D-Bus
# session of its own), makes a data folder that goes away at the end, and offers the
# helpers below.

if [ "${TARVO_UNDER_XVFB:-}" != 1 ]; then
  screen=${TARVO_SCREEN:-1280x800x24}
  if [ "${TARVO_WITH_DBUS:-}" = 1 ]; then
    exec env TARVO_UNDER_XVFB=1 xvfb-run -a -s "-screen 0 $screen" dbus-run-session -- "$0" "$@"
  fi
  exec env TARVO_UNDER_XVFB=1 xvfb-run -a -s "-screen 0 $screen" "$0" "$@"
fi

data=$(mktemp -d)
db="$data/TarvoQRBDB.MDB"
pids=()
cleanup() {
  for p in "${pids[@]}"; do kill "$p" 2>/dev/null || true; done
  # TARVO_KEEP_DATA=1 keeps the data folder and the terminals' logs to look into.
  if [ "${TARVO_KEEP_DATA:-}" = 1 ]; then echo "data kept in $data" >&2; else rm -rf "$data"; fi
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
type_line() { xdotool type --delay 15 "$1"; xdotool key Return; }

# A free port below the kernel's range for outgoing connections (32768 and up), so that no
# connection another program opens meanwhile can take it before the console listens.
free_port() {
  python3 - <<'PY'
import random, socket
while True:
    port = random.randint(20000, 32000)
    s = socket.socket()
    try:
        s.bind(("127.0.0.1", port))
        print(port)
        break
    except OSError:
        pass
    finally:
        s.close()
PY
}

# The console listens once its main window is up; a busy machine may take a while.
wait_for_port() {
  for _ in $(seq 150); do
    (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null && return 0
    sleep 0.2
  done
  fail "the console does not listen on port $1"
}

# Starts the console on the data folder and the port; its pid is in console_pid.
start_console() {
  QT_QPA_PLATFORM=xcb "$1" --data-dir "$data" --port "$2" --odbc-ini "$data/odbc.ini" &
  console_pid=$!
  pids+=("$console_pid")
}

# The operator's log-in, through the log-in window.
log_in() {
  focus "Tarvo QRB - Operator Log-In"
  type_line "$1"
  type_line "$2"
  focus "Tarvo QRB \[User"
}

# Waits until a statement on the database answers the expected text.
wait_for_row() {
  for _ in $(seq 100); do
    [ "$(sqlite3 -cmd ".timeout 10000" "$db" "$1" 2>/dev/null || true)" = "$2" ] && return 0
    sleep 0.2
  done
  fail "${3:-"$1" never answered "$2"}"
}

# The accessibility bus the console and the probes meet on (with TARVO_WITH_DBUS=1).
start_accessibility_bus() {
  /usr/libexec/at-spi-bus-launcher --launch-immediately 2>/dev/null &
  pids+=($!)
  sleep 1
}

# A database made by the sqlite3 tool, not by the console: the administrator's account
# and the rates; and the settings with this many PCs, then any further lines given.
make_database() {
  sqlite3 -cmd ".timeout 10000" "$db" <<'SQL'
CREATE TABLE sysusers (user TEXT, utype TEXT, keys TEXT);
INSERT INTO sysusers VALUES ('ADMIN', 'Admin', 'Kape&Tinapay7');
CREATE TABLE rates (RPH NUMBER, mina NUMBER, mint NUMBER);
INSERT INTO rates VALUES (20, 10, 30);
SQL
  local pcs=$1
  shift
  { printf '%s=NOFPC\n1=PAGE\nPlease don'"'"'t Modify....\n' "$pcs"; if [ $# -gt 0 ]; then printf '%s\n' "$@"; fi; } > "$data/TarvoQRB.INI"
}
