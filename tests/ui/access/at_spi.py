"""Starts the viewer and walks it over AT-SPI: whatever can take the keyboard has a name, and the
graphs say what they show. Exit status 1 with what was missed."""

import subprocess
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

A_MINUTE = 60
CELLS = {Atspi.Role.TABLE_CELL, Atspi.Role.LIST_ITEM, Atspi.Role.TREE_ITEM}


def wait_for(what, look):
    """What `look` finds; waits until it finds something."""
    end = time.monotonic() + A_MINUTE
    while time.monotonic() < end:
        found = look()
        if found:
            return found
        GLib.MainContext.default().iteration(False)
        time.sleep(0.05)
    raise SystemExit(f"waited in vain for {what}")


def program(process):
    if process.poll() is not None:
        raise SystemExit(f"the program ended with status {process.returncode}")
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        child = desktop.get_child_at_index(index)
        if child is not None and child.get_process_id() == process.pid:
            return child
    return None


def nodes(node):
    """The node and all below it."""
    yield node
    for index in range(node.get_child_count()):
        child = node.get_child_at_index(index)
        if child is not None:
            yield from nodes(child)


def find(root, role, name):
    for node in nodes(root):
        if node.get_role() == role and node.get_name() == name:
            return node
    return None


def check_names(window, missed):
    """How many of a window's parts take the keyboard; adds those without a name to `missed`."""
    focusable = 0
    for node in nodes(window):
        states = node.get_state_set()
        if node.get_role() in CELLS or not (
            states.contains(Atspi.StateType.FOCUSABLE)
            and states.contains(Atspi.StateType.SHOWING)
        ):
            continue
        focusable += 1
        if not node.get_name().strip():
            missed.append(f"{window.get_name()}: a {node.get_role_name()} without a name")
    return focusable


def window_called(app, name):
    for index in range(app.get_child_count()):
        window = app.get_child_at_index(index)
        if window is not None and window.get_name() == name:
            return window
    return None


def check_graph(app, missed):
    graph = wait_for("graph 1", lambda: find(app, Atspi.Role.CHART, "graph 1"))
    told = graph.get_description()
    for part in ("from", "to", "over"):
        if f" {part} " not in told:
            missed.append(f"graph 1 does not say its scales: {told!r}")
            break
    box = Atspi.Component.get_extents(graph, Atspi.CoordType.SCREEN)
    if box.width < 100 or box.height < 20:
        missed.append(f"graph 1 stands nowhere: {box.width} x {box.height}")
    print(f"graph 1: {told}")


def use(node):
    """Clicks it. What opens a dialog answers when that is closed: nobody waits for it."""
    Atspi.set_timeout(500, 0)
    try:
        Atspi.Action.do_action(node, 0)
    except GLib.GError:
        pass
    finally:
        Atspi.set_timeout(A_MINUTE * 1000, 0)


def check_dialog(app, item, title, missed):
    """Opens a dialog from the menus, walks it, and closes it."""
    entry = wait_for(f"menu item {item}", lambda: find(app, Atspi.Role.MENU_ITEM, item))
    use(entry)
    dialog = wait_for(f"dialog {title}", lambda: window_called(app, title))
    count = check_names(dialog, missed)
    print(f"{title}: {count} parts that take the keyboard")
    if count < 1:
        missed.append(f"{title}: nothing takes the keyboard")
    button = next(
        find(dialog, Atspi.Role.PUSH_BUTTON, name)
        for name in ("Cancel", "OK")
        if find(dialog, Atspi.Role.PUSH_BUTTON, name)
    )
    use(button)
    wait_for(f"the end of {title}", lambda: window_called(app, title) is None)


def main():
    missed = []
    process = subprocess.Popen(sys.argv[1:])
    try:
        app = wait_for("the program", lambda: program(process))
        frame = wait_for("its window", lambda: app.get_child_count() and app.get_child_at_index(0))
        check_graph(app, missed)
        count = check_names(frame, missed)
        print(f"{frame.get_name()}: {count} parts that take the keyboard")
        if count < 30:
            missed.append(f"only {count} parts of the frame take the keyboard")
        for item, title in (
            ("Properties", "Properties"),
            ("Add. Text", "Additional"),
            ("About Wavo...", "About Wavo"),
        ):
            check_dialog(app, item, title, missed)
    finally:
        process.terminate()
        process.wait()
    for fault in missed:
        print(fault, file=sys.stderr)
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
