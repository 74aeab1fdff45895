"""A window whose selection can be copied: on Ctrl+C, without other keys, it takes the clipboard.

The arguments are its class, a title, and for each format its name and a file with the content. Without
formats nothing is selected in it. It logs its events to standard output. With "-" as the class there is
no window, and it takes the clipboard at once. Long contents are sent in portions.
"""

import sys
from pathlib import Path

from Xlib import X, Xatom, display
from Xlib.protocol import event

PORTION = 100_000


class CopyingWindow:
    def __init__(self, window_class, title, contents):
        self.display = display.Display()
        self.contents = {self.atom(name): content for name, content in contents.items()}
        self.portions = {}
        screen = self.display.screen()
        self.window = screen.root.create_window(
            0, 0, 300, 200, 0, screen.root_depth,
            event_mask=X.KeyPressMask | X.PropertyChangeMask | X.FocusChangeMask)
        if window_class == "-":
            self.take()
            return
        self.window.set_wm_class(window_class, window_class)
        self.window.change_property(
            self.atom("_NET_WM_NAME"), self.atom("UTF8_STRING"), 8, title.encode())
        self.window.map()
        self.display.sync()

    def atom(self, name):
        return self.display.intern_atom(name)

    def say(self, text):
        print(text, flush=True)

    def take(self):
        self.window.set_selection_owner(self.atom("CLIPBOARD"), X.CurrentTime)
        self.display.sync()
        self.say("copied")

    def run(self):
        kinds = {X.KeyPress: self.press, X.SelectionRequest: self.answer,
                 X.SelectionClear: lambda _: self.say("lost"), X.PropertyNotify: self.give_portion}
        while True:
            happened = self.display.next_event()
            kinds.get(happened.type, lambda _: None)(happened)

    def press(self, key):
        symbols = [self.display.keycode_to_keysym(key.detail, column) for column in (0, 2)]
        symbol = symbols[ord("c") in symbols]  # Also in the second layout, as toolkits do.
        self.say(f"key {symbol} {key.state}")
        if symbol == ord("c") and key.state == X.ControlMask and self.contents:
            self.take()

    def answer(self, request):
        place = request.property or request.target
        if not self.give(request.requestor, place, request.target):
            place = X.NONE
        request.requestor.send_event(event.SelectionNotify(
            time=request.time, requestor=request.requestor, selection=request.selection,
            target=request.target, property=place))
        self.display.flush()

    def give(self, window, place, target):
        if target == self.atom("TARGETS"):
            window.change_property(place, Xatom.ATOM, 32, list(self.contents))
        elif target not in self.contents:
            return False
        elif len(self.contents[target]) <= PORTION:
            window.change_property(place, target, 8, self.contents[target])
        else:
            window.change_attributes(event_mask=X.PropertyChangeMask)
            self.portions[window.id, place] = target, self.contents[target]
            window.change_property(place, self.atom("INCR"), 32, [PORTION])
        return True

    def give_portion(self, change):
        waiting = self.portions.get((change.window.id, change.atom))
        if not waiting or change.state != X.PropertyDelete:
            return
        target, rest = waiting
        change.window.change_property(change.atom, target, 8, rest[:PORTION])
        self.display.flush()
        if rest:
            self.portions[change.window.id, change.atom] = target, rest[PORTION:]
        else:
            del self.portions[change.window.id, change.atom]


def main():
    window_class, title, *rest = sys.argv[1:]
    contents = {name: Path(file).read_bytes() for name, file in zip(rest[::2], rest[1::2])}
    CopyingWindow(window_class, title, contents).run()


main()
