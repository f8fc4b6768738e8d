"""The tray icon as a StatusNotifierItem, end to end: this script owns
org.kde.StatusNotifierWatcher on the launcher's private session bus, starts
the real program, reads the item it registers and the item's menu
(com.canonical.dbusmenu), clicks "E&xit" and checks that the program ended in
order. With "xembed" as second argument it runs an XEmbed tray (trayer)
instead: the icon must dock there and its menu's Exit end the program."""
import glob
import os
import re
import subprocess
import sys
import tempfile
import time

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

PROPS = "org.freedesktop.DBus.Properties"
cadrelle = sys.argv[1]
xembed = len(sys.argv) > 2 and sys.argv[2] == "xembed"
home = tempfile.mkdtemp(prefix="cadrelle-tray-")
env = dict(os.environ, HOME=home, XDG_CONFIG_HOME=home + "/.config", XDG_DATA_HOME=home + "/.local/share",
           XDG_RUNTIME_DIR=home + "/run")
os.makedirs(home + "/run", mode=0o700)
dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
items = []


class Watcher(dbus.service.Object):
    @dbus.service.method("org.kde.StatusNotifierWatcher", in_signature="s", sender_keyword="sender")
    def RegisterStatusNotifierItem(self, service, sender=None):
        items.append((sender, service))

    @dbus.service.method(PROPS, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        return self.GetAll(interface)[name]

    @dbus.service.method(PROPS, in_signature="s", out_signature="a{sv}")
    def GetAll(self, interface):
        return {"IsStatusNotifierHostRegistered": True, "ProtocolVersion": 0,
                "RegisteredStatusNotifierItems": dbus.Array([s for _, s in items], signature="s")}


def wait(condition, seconds=30):
    deadline = time.time() + seconds
    while not condition() and time.time() < deadline:
        GLib.MainContext.default().iteration(False)
        time.sleep(0.02)
    return condition()


def log_text():
    return "".join(open(f, errors="replace").read() for f in glob.glob(home + "/app/log_*.txt"))


tray = None
if xembed:
    tray = subprocess.Popen(["trayer", "--edge", "top", "--align", "right", "--widthtype", "pixel", "--width", "80"])
    time.sleep(1)
else:
    name = dbus.service.BusName("org.kde.StatusNotifierWatcher", bus)
    watcher = Watcher(bus, "/StatusNotifierWatcher")
program = subprocess.Popen([cadrelle, "--app-dir", home + "/app"], env=env)
try:
    if xembed:
        # The icon is a 24x24 window of ours docked in trayer's panel; its
        # menu pops up on a right click, and Up wraps to the last entry, Exit.
        assert wait(lambda: "### Tray icon: XEmbed" in log_text()), log_text()[-600:]
        docked = re.compile(r'"cadrelle": \("cadrelle" "Cadrelle"\)\s+24x24\+\d+\+\d+\s+\+(\d+)\+(\d+)')
        assert wait(lambda: docked.search(subprocess.run(["xwininfo", "-root", "-tree"], capture_output=True,
                                                         text=True).stdout)), "icon not docked"
        x, y = map(int, docked.search(subprocess.run(["xwininfo", "-root", "-tree"], capture_output=True,
                                                     text=True).stdout).groups())
        subprocess.run(["xdotool", "mousemove", str(x + 12), str(y + 12), "click", "3"], check=True)
        time.sleep(1)
        if os.environ.get("CADRELLE_SCREENSHOT_DIR"):
            subprocess.run(["import", "-window", "root", os.environ["CADRELLE_SCREENSHOT_DIR"] + "/xembed-menu.png"])
        subprocess.run(["xdotool", "key", "Up", "Return"], check=True)
    else:
        assert wait(lambda: items), "no item registered"
        sender, service = items[0]
        path = service if service.startswith("/") else "/StatusNotifierItem"
        owner = sender if service.startswith("/") else service
        item = bus.get_object(owner, path)
        props = item.GetAll("org.kde.StatusNotifierItem", dbus_interface=PROPS)
        assert props["Title"] == "Cadrelle" and props["Status"] == "Active", props
        assert os.path.isfile(os.path.join(props["IconThemePath"], props["IconName"] + ".png")), props
        menu = bus.get_object(owner, props["Menu"])
        _, layout = menu.GetLayout(0, -1, ["label", "type"], dbus_interface="com.canonical.dbusmenu")
        entries = [(int(child[0]), str(child[1].get("label", ""))) for child in layout[2]]
        labels = [label for _, label in entries if label]
        assert labels == ["_Show Mainframe...", "_About...", "E_xit"], entries
        exit_id = next(i for i, label in entries if label == "E_xit")
        menu.Event(exit_id, "clicked", dbus.Int32(0, variant_level=1), dbus.UInt32(0),
                   dbus_interface="com.canonical.dbusmenu")
    assert program.wait(timeout=30) == 0
    text = log_text()
    assert "CadrelleFrame::TrayExit" in text and text.rstrip().endswith("<<<<<<<<<<"), text[-600:]
    assert "<<< Cadrelle End" in text
finally:
    if program.poll() is None:
        program.kill()
    if tray:
        tray.kill()
print("ok")
