#!/usr/bin/python3
# Times the console's answer to the operator, over the accessibility bus, every two
# seconds for SECONDS: the toolbar's "Active Terminal View" pressed, then the board's
# page box read back. The bus is served by the console's one thread, between its socket
# events and timer ticks, so a slow answer here is a slow console for the operator.
# Prints one line per minute and exits 1 when any answer took LIMIT_MS or more.
# Usage: responsiveness.py SECONDS LIMIT_MS
import sys
import time

from atspi_console import app, find

seconds, limit = int(sys.argv[1]), float(sys.argv[2])
app()  # on the bus before anything is looked for
button = find(lambda n: n.getRoleName() == "push button"
              and n.name == "Active Terminal View", "the toolbar's Active Terminal View")
button.queryAction().doAction(0)
page = find(lambda n: n.description == "txtpage", "the board's page box")

worst_all, worst, minute, end = 0.0, 0.0, 1, time.time() + seconds
next_minute = time.time() + 60
while time.time() < end:
    start = time.perf_counter()
    button.queryAction().doAction(0)
    page.queryText().getText(0, -1)
    took = (time.perf_counter() - start) * 1000
    worst, worst_all = max(worst, took), max(worst_all, took)
    if time.time() >= next_minute:
        print("operator minute %d: slowest answer %.1f ms" % (minute, worst), flush=True)
        minute, worst, next_minute = minute + 1, 0.0, next_minute + 60
    time.sleep(2)
print("operator: slowest answer %.1f ms" % worst_all)
sys.exit(0 if worst_all < limit else 1)
