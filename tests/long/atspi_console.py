# The running console as assistive technology sees it on the accessibility bus: the
# application, every node under it, and a node found by a predicate.
import sys
import time

import pyatspi


def app():
    for _ in range(100):
        for a in pyatspi.Registry.getDesktop(0):
            if a is not None and a.name == "tarvoqrb":
                return a
        time.sleep(0.1)
    sys.exit("FAIL: the console is not on the accessibility bus")


def nodes(node, depth=0):
    yield node
    if depth > 20:
        return
    for i in range(node.childCount):
        child = node.getChildAtIndex(i)
        if child is not None:
            yield from nodes(child, depth + 1)


# The first node of the console for which predicate holds, looked for again until the
# timeout (windows open a little after they are asked for).
def find(predicate, what, timeout=10):
    end = time.time() + timeout
    while time.time() < end:
        for n in nodes(app()):
            try:
                if predicate(n):
                    return n
            except Exception:
                pass
        time.sleep(0.2)
    sys.exit("FAIL: not found: " + what)
