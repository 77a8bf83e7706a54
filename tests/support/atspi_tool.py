#!/usr/bin/python3
# Drives the application under test the way a screen reader does: through the accessibility bus,
# finding objects by role and accessible name. Each argument is one step, fields split by "|":
#
#   wait|ROLE|NAME           until a showing object with that role and name exists
#   gone|ROLE|NAME           until no showing object with that role and name exists
#   click|ROLE|NAME          performs the object's first action (press, click, toggle, activate)
#   set|ROLE|NAME|TEXT       replaces the object's editable text
#   select|ROLE|NAME         selects the object among its parent's children (a list's row, or
#                            the row of a table's cell)
#   select|ROLE|NAME|ITEM    selects the child named ITEM of a list, table or drop-down list
#   within|ROLE|NAME         later steps search only inside that object (one window of several
#                            with the same buttons); "within||" searches everything again
#
# A ROLE written "ROLE@WINDOW" is looked for only in the top-level window named WINDOW.
#   text|ROLE|NAME           prints the object's text (or, without text, its name)
#   state|ROLE|NAME          prints the object's states, sorted, space-separated
#   tree|ROLE|NAME           prints the showing subtree: one "ROLE|NAME" line per object, indented
#   focus                    prints "ROLE|NAME" of the focused object
#
# ROLE@WINDOW looks only inside the top-level window named WINDOW (the main window's toolbar
# also has an "Export" button, say). An empty NAME matches any name; "*END" any name ending in END
# (a button that shows a long path shortened at its start). Only objects of the process `--pid PID` (default: the parent
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


# A list with more rows than this is not walked row by row: asking for each of a hundred thousand
# cells over the bus would take minutes. The list itself is still found by role and name.
BIG_TABLE = 500


def walk(obj, depth=0):
    yield obj, depth
    try:
        if obj.getRoleName() in ("table", "tree table") and obj.childCount > BIG_TABLE:
            return
        children = list(obj)
    except Exception:
        return
    for child in children:
        if child is not None and (showing(child) or child.getRoleName() in ("frame", "dialog", "window")):
            yield from walk(child, depth + 1)


scope = None  # (role, name) of the object later steps search in, or None for the application


def find(pid, role, name):
    app = application(pid)
    if app is None:
        return None
    if scope is not None and (role, name) != scope:
        app = find_in(app, *scope)
        if app is None:
            return None
    return find_in(app, role, name)


def named(obj, name):
    if name.startswith("*"):
        return obj.name.endswith(name[1:])
    return not name or obj.name == name


def find_in(app, role, name):
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
                if obj.getRoleName() == role and named(obj, name) and (showing(obj) or role == "application"):
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


def children(obj):
    try:
        return [child for child in obj]
    except Exception:
        return []


def items_below(obj):
    # The selectable items wherever they sit below the object (a combo box's menu, a list's rows).
    found = []
    for child in children(obj):
        if child is None:
            continue
        if child.getRoleName() in ("menu item", "list item", "table cell"):
            found.append(child.name)
        else:
            found.extend(items_below(child))
    return found


def select(obj, item):
    # A table or list holds its items itself; a drop-down list in its pop-up menu, shown or not.
    items = children(obj)
    names = [child.name if child is not None else None for child in items]
    if item not in names and items:
        names = [child.name if child is not None else None for child in children(items[0])]
    if item not in names:
        names = items_below(obj)
    if item not in names:
        print(f"no item '{item}' in {obj.getRoleName()} '{obj.name}': {names}", file=sys.stderr)
        return False
    return bool(obj.querySelection().selectChild(names.index(item)))


def select_in_parent(obj):
    # A table of several columns selects whole rows only (a printer list, say).
    parent, index = obj.parent, obj.getIndexInParent()
    if parent.querySelection().selectChild(index):
        return True
    try:
        table = parent.queryTable()
    except NotImplementedError:
        return False
    return bool(table.addRowSelection(table.getRowAtIndex(index)))


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
    if verb == "within":
        global scope
        scope = (role, name) if role else None
        return True
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
    if verb == "select" and len(fields) < 4:
        return select_in_parent(obj)
    if verb == "set":
        editable = obj.queryEditableText()
        return bool(editable.setTextContents(fields[3]))
    if verb == "select":
        return select(obj, fields[3])
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
