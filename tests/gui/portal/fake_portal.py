#!/usr/bin/python3
# A desktop portal granting every global shortcut; writes "id trigger" lines and "closed" to argv[1].
import sys, dbus, dbus.service, dbus.mainloop.glib
from gi.repository import GLib
dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus, loop, SC, NAME, PATH = dbus.SessionBus(), GLib.MainLoop(), 'org.freedesktop.portal.GlobalShortcuts', 'org.freedesktop.portal.Desktop', '/org/freedesktop/portal/desktop'

class Portal(dbus.service.Object):
    def answer(self, sender, options, results):  # before the reply: the client subscribed first
        signal = dbus.lowlevel.SignalMessage('%s/request/%s/%s' % (PATH, sender[1:].replace('.', '_'), options['handle_token']), 'org.freedesktop.portal.Request', 'Response')
        signal.append(dbus.UInt32(0), dbus.Dictionary(results, signature='sv'), signature='ua{sv}')
        return bus.send_message(signal) and signal.get_path()
    @dbus.service.method('org.freedesktop.DBus.Properties', in_signature='ss', out_signature='v')
    def Get(self, interface, name): return dbus.UInt32(1)
    @dbus.service.method(SC, in_signature='a{sv}', out_signature='o', sender_keyword='sender')
    def CreateSession(self, options, sender):
        return Session(bus, PATH + '/session/1') and self.answer(sender, options, {'session_handle': PATH + '/session/1'})
    @dbus.service.method(SC, in_signature='oa(sa{sv})sa{sv}', out_signature='o', sender_keyword='sender')
    def BindShortcuts(self, session, shortcuts, parent, options, sender):
        record.write(''.join('%s %s\n' % (id, props.get('preferred_trigger', '')) for id, props in shortcuts))
        return self.answer(sender, options, {'shortcuts': shortcuts})
    @dbus.service.method('test.Portal', in_signature='s')  # the test presses a key
    def Activate(self, id): self.Activated(PATH + '/session/1', id, 0, {})
    @dbus.service.signal(SC, signature='osta{sv}')
    def Activated(self, session, id, timestamp, options): pass

class Session(dbus.service.Object):
    @dbus.service.method('org.freedesktop.portal.Session')
    def Close(self): bus.release_name(NAME); record.write('closed\n'); loop.quit()

portal, name = Portal(bus, PATH), dbus.service.BusName(NAME, bus)
record = open(sys.argv[1], 'w', buffering=1)  # its existence says: ready
loop.run()
