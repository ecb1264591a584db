"""The package's addons against a fake tw_C, where the scenarios in tests/scenarios/python don't reach: the
names that find no addon, what a failed load and an unload leave, and the answers at their edges."""
import contextlib
import io
import os
import sys
import tempfile
import textwrap
import unittest

from fake_tw_C import fake, import_tw

tw = import_tw()


class AddonTest(unittest.TestCase):
    def setUp(self) -> None:
        fake.reset()
        self.folder = tempfile.TemporaryDirectory()
        fake.variables["tidewright_addondir"] = self.folder.name
        self.out = io.StringIO()
        self.err = io.StringIO()
        self.enterContext(contextlib.redirect_stdout(self.out))
        self.enterContext(contextlib.redirect_stderr(self.err))

    def tearDown(self) -> None:
        for addon in list(tw.addons):
            tw.unloadModuleAddon(addon.name)
        self.folder.cleanup()

    def write(self, path: str, source: str) -> None:
        full = os.path.join(self.folder.name, path)
        os.makedirs(os.path.dirname(full), exist_ok=True)
        with open(full, "w", encoding="utf-8") as f:
            f.write(textwrap.dedent(source))

    def addon(self, name: str, source: str) -> None:
        self.write(f"{name}/{name.rsplit('/', 1)[-1]}.py", "import tw\nimport tw_C\n" + textwrap.dedent(source))

    def lines(self) -> list[str]:
        return self.out.getvalue().splitlines()


class Finding(AddonTest):
    def test_names_without_a_file_are_declined(self) -> None:
        self.write("textonly/tw_textonly.txt", "block load\n{\n}\n")
        self.write("elsewhere/other.py", "")
        for name in ["textonly", "elsewhere", "missing", "", "../x", "a/../b", "./a", "a//b"]:
            with self.subTest(name=name):
                self.assertEqual(tw.loadModuleAddon(name), 0)
        self.assertEqual(self.lines(), [])

    def test_an_addon_folder_that_is_no_variable_declines_everything(self) -> None:
        self.addon("quiet", "")
        del fake.variables["tidewright_addondir"]
        self.assertEqual(tw.loadModuleAddon("quiet"), 0)

    def test_a_nested_name_lives_in_its_own_folder_and_module(self) -> None:
        self.addon("games/ctf", "@tw.block('start')\ndef start(): print('ctf starts')\n")
        self.assertEqual(tw.loadModuleAddon("games\\ctf"), 1)
        self.assertIn("twaddon.games.ctf", sys.modules)
        tw.addons.callBlock("games/ctf/start")
        self.assertEqual(self.lines(), ["[Tidewright] Loaded Python addon games/ctf", "ctf starts"])


class Loading(AddonTest):
    def test_a_second_load_keeps_the_first(self) -> None:
        self.addon("once", "print('imported')\n")
        tw.loadModuleAddon("once")
        self.assertEqual(tw.loadModuleAddon("once"), 1)
        self.assertEqual(self.lines()[-1], "[Tidewright] The Python addon once is already loaded; tw_unload it first.")
        self.assertEqual(self.lines().count("imported"), 1)

    def test_an_import_that_raises_leaves_nothing(self) -> None:
        self.write("broken/helper.py", "value = 1\n")
        self.addon("broken", """
            from . import helper
            @tw.event('player_death')
            def died(event): pass
            @tw.tick
            def ticking(): print('tick')
            raise ValueError('broken on purpose')
        """)
        self.assertEqual(tw.loadModuleAddon("broken"), 1)
        self.assertIn("ValueError: broken on purpose", self.err.getvalue())
        self.assertEqual(self.lines(), ["[Tidewright] The Python addon broken could not be loaded."])
        self.assertFalse([m for m in sys.modules if m.startswith("twaddon.broken")])
        self.assertEqual(tw.addons.hasEvent("player_death"), 0)
        tw.addons.tick()
        self.assertNotIn("tick", self.lines())
        self.assertNotIn("broken", tw.addons)

    def test_system_exit_during_import_is_only_an_error(self) -> None:
        self.addon("quitter", "import sys\nsys.exit(3)\n")
        self.assertEqual(tw.loadModuleAddon("quitter"), 1)
        self.assertIn("SystemExit: 3", self.err.getvalue())


class Unloading(AddonTest):
    def test_unload_removes_every_module_and_the_handlers_the_load_block_added(self) -> None:
        self.write("gone/helper.py", "value = 1\n")
        self.addon("gone", """
            from . import helper
            @tw.client_filter
            def stop(userid, command, args): return False
            @tw.block('load')
            def load():
                @tw.event('round_start')
                def late(event): print('late')
        """)
        tw.loadModuleAddon("gone")
        self.assertEqual(tw.addons.hasEvent("round_start"), 1)
        tw.unloadModuleAddon("gone")
        self.assertEqual(self.lines()[-1], "Python addon removed: gone")
        self.assertFalse([m for m in sys.modules if m.startswith("twaddon.gone")])
        self.assertEqual(tw.addons.hasEvent("round_start"), 0)
        fake.event = {}
        tw.addons.triggerEvent("round_start")
        self.assertEqual(tw.addons.clientCommand(2), 1)
        tw.printScriptList()
        self.assertEqual(self.lines()[-1], "Python addon removed: gone")

    def test_unloading_an_unknown_name_is_a_level_1_note(self) -> None:
        tw.unloadModuleAddon("nobody")
        self.assertEqual(self.lines(), [])
        self.assertEqual(fake.dbgmsgs, [(1, "No Python addon is named nobody")])


class Answers(AddonTest):
    def test_events_reach_handlers_in_load_order_with_the_current_event(self) -> None:
        self.addon("first", """
            @tw.event('player_death', 'player_hurt')
            def died(event): print('first', event.name, event['userid'], event.get_int('attacker'), repr(event['nokey']))
        """)
        self.addon("second", """
            @tw.event('player_death')
            def died(event): print('second', event.get_float('userid'), event.get_int('weapon', -1))
        """)
        tw.loadModuleAddon("first")
        tw.loadModuleAddon("second")
        fake.event = {"userid": "4", "attacker": "7", "weapon": "awp"}
        tw.addons.triggerEvent("player_death")
        tw.addons.triggerEvent("player_hurt")
        tw.addons.triggerEvent("player_spawn")
        self.assertEqual(self.lines()[2:], ["first player_death 4 7 ''", "second 4.0 -1", "first player_hurt 4 7 ''"])

    def test_only_a_full_name_finds_a_block(self) -> None:
        self.addon("blocks", "@tw.block('show')\ndef show(): print('show')\n")
        tw.loadModuleAddon("blocks")
        for name in ["blocks/missing", "nobody/show", "show"]:
            tw.addons.callBlock(name)
        self.assertEqual(self.lines()[1:], [])
        self.assertEqual(fake.dbgmsgs, [(1, "No Python block blocks/missing"), (1, "No Python block nobody/show"),
                                        (1, "No Python block show")])

    def test_tick_runs_every_handler_and_survives_errors(self) -> None:
        self.addon("ticker", """
            @tw.tick
            def boom(): raise KeyError('tick')
            @tw.tick
            def after(): print('tick')
        """)
        tw.loadModuleAddon("ticker")
        tw.addons.tick()
        tw.addons.tick()
        self.assertEqual(self.lines()[1:], ["tick", "tick"])
        self.assertEqual(self.err.getvalue().count("KeyError: 'tick'"), 2)

    def test_say_filters_eat_with_false_and_pass_with_anything_else(self) -> None:
        self.addon("chat", """
            seen = []
            @tw.say_filter
            def answer(userid, text, teamonly):
                seen.append((userid, text, teamonly))
                if text == 'raise': raise ValueError('filter failed')
                return {'eat': False, 'zero': 0, 'none': None, 'true': True}.get(text)
            @tw.say_filter
            def second(userid, text, teamonly):
                print('second saw', text)
        """)
        tw.loadModuleAddon("chat")
        answers = {text: tw.addons.sayFilter(3, text, 1) for text in ["eat", "zero", "none", "true", "raise"]}
        self.assertEqual(answers, {"eat": 0, "zero": 0, "none": 1, "true": 1, "raise": 1})
        self.assertEqual(self.lines()[1:], ["second saw none", "second saw true", "second saw raise"])
        self.assertEqual(sys.modules["twaddon.chat"].seen[0], (3, "eat", True))


class Registering(AddonTest):
    def test_handlers_outside_an_addon_are_refused(self) -> None:
        with self.assertRaises(RuntimeError):
            tw.tick(lambda: None)

    def test_decorators_check_their_names(self) -> None:
        for call in [lambda: tw.event(), lambda: tw.event(""), lambda: tw.event(3), lambda: tw.block("a/b"),
                     lambda: tw.block("")]:
            with self.assertRaises(TypeError):
                call()


if __name__ == "__main__":
    unittest.main()
