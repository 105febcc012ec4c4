#!/usr/bin/python3
# Reaches the running console as a screen reader does, over the accessibility bus, and
# does a whole settlement without a mouse: open the board, stop PC 3's session, save its
# bill, answer Yes. On the way it checks that every control of the board and of the bill
# is named and carries its object name as description.
# Usage: accessibility_bus.py [PC [PID DELAY_MS]]: with PID, the console is killed with
# SIGKILL DELAY_MS after the Yes, to catch it in the middle of saving.
import os
import signal
import sys
import time

import pyatspi

from atspi_console import find, nodes

INTERACTIVE = {"push button", "toggle button", "check box", "radio button", "combo box",
               "text", "password text", "spin button", "list", "table", "menu item"}


def press(node):
    action = node.queryAction()
    for i in range(action.nActions):
        if action.getName(i) in ("Press", "press", "click"):
            action.doAction(i)
            return
    action.doAction(0)


def unnamed(root):
    found = []
    for n in nodes(root):
        try:
            role = n.getRoleName()
            if role in INTERACTIVE and n.getState().contains(pyatspi.STATE_SHOWING):
                if not n.name.strip():
                    found.append(role + " " + n.description)
        except Exception:
            pass
    return found


press(find(lambda n: n.getRoleName() == "push button" and n.name == "Active Terminal View",
           "the toolbar's Active Terminal View"))
board = find(lambda n: n.description == "ATV", "the board window")
problems = unnamed(board)
if problems:
    sys.exit("FAIL: controls of the board without a name: " + ", ".join(problems))
pc = sys.argv[1] if len(sys.argv) > 1 else "3"
stop = find(lambda n: n.getRoleName() == "push button" and n.name == "Stop PC " + pc,
            "the tile button named Stop PC " + pc)
press(stop)
bill = find(lambda n: n.description == "frmBill", "the bill of PC " + pc)
problems = unnamed(bill)
if problems:
    sys.exit("FAIL: controls of the bill without a name: " + ", ".join(problems))
due = find(lambda n: n.description == "txtAmountDue", "the amount due")
print("amount due read by the bus:", due.queryText().getText(0, -1))
press(find(lambda n: n.getRoleName() == "push button" and n.description == "cmdsave",
           "the bill's Save button"))
yes = find(lambda n: n.getRoleName() == "push button" and n.name in ("Yes", "&Yes"),
           "Yes to the save question")
press(yes)
if len(sys.argv) > 3:
    time.sleep(int(sys.argv[3]) / 1000.0)
    os.kill(int(sys.argv[2]), signal.SIGKILL)
    print("killed the console %s ms after Yes" % sys.argv[3])
else:
    print("saved through the accessibility bus")
