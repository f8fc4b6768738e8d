"""The real program's tray clicked to its end (exit 0, end banner): "sni" reads the item and its dbusmenu through
our own watcher and clicks E&xit by Event; "xembed" docks in trayer and picks Exit by key (Up wraps to the last)."""
import glob, os, re, subprocess, sys, tempfile, time

import dbus, dbus.mainloop.glib, dbus.service
from gi.repository import GLib

PROPS = "org.freedesktop.DBus.Properties"
cadrelle, mode = sys.argv[1], sys.argv[2]
home = tempfile.mkdtemp(prefix="cadrelle-tray-")
os.makedirs(home + "/run", mode=0o700)
env = dict(os.environ, HOME=home, XDG_CONFIG_HOME=home + "/.config", XDG_DATA_HOME=home + "/.local/share",
           XDG_RUNTIME_DIR=home + "/run")
dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
items = []


class Watcher(dbus.service.Object):
    @dbus.service.method("org.kde.StatusNotifierWatcher", in_signature="s", sender_keyword="sender")
    def RegisterStatusNotifierItem(self, service, sender=None):
        items.append((sender, service))


def wait(condition, seconds=30):
    deadline = time.time() + seconds
    while not condition() and time.time() < deadline:
        GLib.MainContext.default().iteration(False)
        time.sleep(0.02)
    return condition()


def log_text():
    return "".join(open(f, errors="replace").read() for f in glob.glob(home + "/app/log_*.txt"))


def docked():
    tree = subprocess.run(["xwininfo", "-root", "-tree"], capture_output=True, text=True).stdout
    return re.search(r'"cadrelle": \("cadrelle" "Cadrelle"\)\s+24x24\+\d+\+\d+\s+\+(\d+)\+(\d+)', tree)


helpers = []
if mode == "xembed":
    helpers.append(subprocess.Popen(["trayer", "--edge", "top", "--align", "right", "--widthtype", "pixel",
                                     "--width", "80"]))
    assert wait(lambda: subprocess.run(["xdotool", "search", "--class", "trayer"], capture_output=True).returncode == 0)
else:
    name = dbus.service.BusName("org.kde.StatusNotifierWatcher", bus)
    watcher = Watcher(bus, "/StatusNotifierWatcher")
program = subprocess.Popen([cadrelle, "--app-dir", home + "/app"], env=env)
try:
    if mode == "xembed":
        assert wait(docked), log_text()[-600:]
        x, y = map(int, docked().groups())
        subprocess.run(["xdotool", "mousemove", str(x + 12), str(y + 12), "click", "3"], check=True)
        time.sleep(1)  # the menu maps; nothing to ask about it over X
        subprocess.run(["xdotool", "key", "Up", "Return"], check=True)
    else:
        assert wait(lambda: items), "no item registered"
        sender, service = items[0]
        owner, path = (sender, service) if service.startswith("/") else (service, "/StatusNotifierItem")
        props = bus.get_object(owner, path).GetAll("org.kde.StatusNotifierItem", dbus_interface=PROPS)
        assert props["Title"] == "Cadrelle" and props["Status"] == "Active", props
        assert os.path.isfile(os.path.join(props["IconThemePath"], props["IconName"] + ".png")), props
        menu = bus.get_object(owner, props["Menu"])
        _, layout = menu.GetLayout(0, -1, ["label"], dbus_interface="com.canonical.dbusmenu")
        entries = {str(child[1]["label"]): int(child[0]) for child in layout[2] if "label" in child[1]}
        assert list(entries) == ["_Show Mainframe...", "_About...", "E_xit"], entries
        menu.Event(entries["E_xit"], "clicked", dbus.Int32(0, variant_level=1), dbus.UInt32(0),
                   dbus_interface="com.canonical.dbusmenu")
    assert program.wait(timeout=30) == 0
    text = log_text()
    assert "CadrelleFrame::TrayExit" in text and "<<< Cadrelle End" in text, text[-600:]
finally:
    for process in [program] + helpers:
        if process.poll() is None:
            process.kill()
print("ok")
