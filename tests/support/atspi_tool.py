#!/usr/bin/python3
# Drives the application under test the way a screen reader does: through the accessibility bus,
# finding objects by role and accessible name. Each argument is one step, fields split by "|":
#
#   wait|ROLE|NAME           until a showing object with that role and name exists
#   gone|ROLE|NAME           until no showing object with that role and name exists
#   click|ROLE|NAME          performs the object's first action (press, click, toggle, activate)
#   set|ROLE|NAME|TEXT       replaces the object's editable text
#   select|ROLE|NAME|ITEM    selects the item named ITEM of a list or combo box (its Selection)
#   text|ROLE|NAME           prints the object's text (or, without text, its name)
#   state|ROLE|NAME          prints the object's states, sorted, space-separated
#   tree|ROLE|NAME           prints the showing subtree: one "ROLE|NAME" line per object, indented
#   focus                    prints "ROLE|NAME" of the focused object
#
# ROLE@WINDOW looks only inside the top-level window named WINDOW (the main window's toolbar
# also has an "Export" button, say). An empty NAME matches any name. Only objects of the process `--pid PID` (default: the parent
# process) are searched. The exit status is 0 when every step succeeded, 1 when a step failed or
# waited 10 seconds in vain (the reason goes to stderr).
import sys
import time

import pyatspi

TIMEOUT = 10.0


def application(pid):
    desktop = pyatspi.Registry.getDesktop(0)
    for app in desktop:
        try:
            if app is not None and app.get_process_id() == pid:
                return app
        except Exception:
            pass
    return None


def showing(obj):
    try:
        return obj.getState().contains(pyatspi.STATE_SHOWING)
    except Exception:
        return False


def walk(obj, depth=0):
    yield obj, depth
    try:
        children = list(obj)
    except Exception:
        return
    for child in children:
        if child is not None and (showing(child) or child.getRoleName() in ("frame", "dialog", "window")):
            yield from walk(child, depth + 1)


def find(pid, role, name):
    app = application(pid)
    if app is None:
        return None
    roots = [app]
    if "@" in role:
        role, window = role.split("@", 1)
        try:
            roots = [w for w in app if w is not None and w.name == window]
        except Exception:
            return None
    for root in roots:
        for obj, _ in walk(root):
            try:
                if obj.getRoleName() == role and (not name or obj.name == name) and (showing(obj) or role == "application"):
                    return obj
            except Exception:
                continue
    return None


def until(predicate):
    end = time.monotonic() + TIMEOUT
    while True:
        result = predicate()
        if result:
            return result
        if time.monotonic() > end:
            return None
        time.sleep(0.05)


def text_of(obj):
    try:
        t = obj.queryText()
        return t.getText(0, t.characterCount)
    except NotImplementedError:
        return obj.name


def run_step(pid, step):
    fields = step.split("|")
    verb = fields[0]
    if verb == "focus":
        app = application(pid)
        for obj, _ in walk(app) if app else []:
            if obj.getState().contains(pyatspi.STATE_FOCUSED):
                print(f"{obj.getRoleName()}|{obj.name}")
                return True
        print("no focused object", file=sys.stderr)
        return False
    role, name = fields[1], fields[2]
    if verb == "gone":
        if until(lambda: find(pid, role, name) is None) is None:
            print(f"still there: {role} '{name}'", file=sys.stderr)
            return False
        return True
    obj = until(lambda: find(pid, role, name))
    if obj is None:
        print(f"not found: {role} '{name}'", file=sys.stderr)
        return False
    if verb == "wait":
        return True
    if verb == "click":
        action = obj.queryAction()
        if action.nActions < 1:
            print(f"no action: {role} '{name}'", file=sys.stderr)
            return False
        return bool(action.doAction(0))
    if verb == "set":
        editable = obj.queryEditableText()
        return bool(editable.setTextContents(fields[3]))
    if verb == "select":
        items = []

        def collect(o):
            for child in o:
                if child is None:
                    continue
                if child.getRoleName() in ("menu item", "list item", "table cell"):
                    items.append(child.name)
                else:
                    collect(child)

        collect(obj)
        if fields[3] not in items:
            print(f"no item '{fields[3]}' in {role} '{name}': {items}", file=sys.stderr)
            return False
        return bool(obj.querySelection().selectChild(items.index(fields[3])))
    if verb == "text":
        print(text_of(obj))
        return True
    if verb == "state":
        names = sorted(pyatspi.stateToString(s) for s in obj.getState().getStates())
        print(" ".join(names))
        return True
    if verb == "tree":
        for child, depth in walk(obj):
            print("  " * depth + f"{child.getRoleName()}|{child.name}")
        return True
    print(f"unknown step: {step}", file=sys.stderr)
    return False


def main(argv):
    pid = None
    steps = []
    i = 1
    while i < len(argv):
        if argv[i] == "--pid":
            pid = int(argv[i + 1])
            i += 2
            continue
        steps.append(argv[i])
        i += 1
    if pid is None:
        import os
        pid = os.getppid()
    for step in steps:
        if not run_step(pid, step):
            return 1
        sys.stdout.flush()
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
