#!/usr/bin/env python3
"""The page of a session, in a browser: what it shows, how it reacts, and what session and arguments cannot break."""
import html
import json
import re
import shutil
import unittest

from tool import HANDHELD, ToolTest

FLAGS = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
         "--disable-component-update", "--disable-sync", "--disable-dev-shm-usage", "--enable-logging=stderr",
         "--window-size=1280,1000"]
# Runs in the page, after its own script; what it finds becomes an element of the document that the browser prints.
PROBE = """<script>
function drag(box, from, to, more = {}) {
  const canvas = box.querySelectorAll('canvas')[1], { left, top, width } = canvas.getBoundingClientRect();
  const at = (type, target, share) => target.dispatchEvent(new MouseEvent(type, {
    bubbles: true, clientX: left + 70 + share * (width - 70), clientY: top + 60, ...more }));
  at('mousedown', canvas, from); at('mousemove', document, to); at('mouseup', document, to);
}
const text = selector => [...document.querySelectorAll(selector)].map(element => element.textContent);
const range = () => text('.range').map(its => its.match(/-?[0-9.]+/g).slice(0, 2).map(Number));
const choose = (id, value) => { byId(id).value = value; byId(id).onchange(); return byId('exposures').tBodies[0].rows; };
const found = (() => { %s })();
document.body.append(make('output', JSON.stringify(found)));
</script></body>"""


@unittest.skipUnless(shutil.which("chromium"), "chromium is not installed")
class Page(ToolTest):
    def look(self, probe, *arguments):
        """What the probe returns in the page that lsc_replay makes."""
        self.replay(*arguments, "--html", "page.html")
        page = (self.folder / "page.html").read_text(encoding="utf-8")
        self.assertEqual(page.count("</body>"), 1)
        probed = self.write("probed.html", page.replace("</body>", PROBE % probe))
        done = self.run_command(["chromium", *FLAGS, f"--user-data-dir={self.folder / 'profile'}", "--dump-dom",
                                 probed.as_uri()])
        self.assertNotIn("CONSOLE", done.stderr)
        return json.loads(html.unescape(re.search(r"<output>(.*)</output>", done.stdout)[1]))

    def test_shows_what_the_table_shows(self):
        table, summary = self.replay(HANDHELD).split("\n\n", 1)
        found = self.look("return {last: text('#exposures tr:last-child td'), rows: byId('exposures').rows.length,"
                          "figures: text('.figures td'), advice: text('#findings td:last-child')}", HANDHELD)
        self.assertEqual(found["rows"], len(table.splitlines()))
        self.assertEqual([found["last"][i] for i in (1, 2, 4, 3)], table.splitlines()[-1].split()[:3] + ["1"])
        self.assertGreater(len(found["figures"]), 20)
        for text in found["figures"] + found["advice"]:
            self.assertIn(text, summary)

    def test_filter(self):
        found = self.look("const rows = choose('outcome', data.groups.findIndex(([text]) => /within/.test(text)));"
                          "return {texts: [...rows].map(row => row.lastChild.textContent), shown: text('#shown'),"
                          "all: choose('outcome', '').length}", HANDHELD)
        self.assertEqual([text.startswith("nearest sample") for text in found["texts"]], [True] * 3)
        self.assertEqual((found["shown"], found["all"]), (["3 of 3 shown"], 691))

    def test_zoom_pan_and_reading(self):
        found = self.look(
            "const frames = document.querySelector('.frames'), x = document.querySelector('.x'), steps = [range()[0]];"
            "drag(x, 0.25, 0.5); steps.push(range()[0]);"
            "drag(frames, 0.5, 0.25, {shiftKey: true}); steps.push(range()[0]);"
            "choose('outcome', '')[183].onclick(); steps.push(range()[0]);"
            "x.querySelectorAll('canvas')[1].dispatchEvent(new MouseEvent('mousemove', {bubbles: true,"
            "  clientX: x.getBoundingClientRect().left + 660, clientY: x.getBoundingClientRect().top + 60}));"
            "return {steps, reading: text('.reading')[0]}", HANDHELD)
        (begin, end), zoomed, panned, row = found["steps"]
        self.assertEqual((begin, end), (-0.4, 10031.0))  # without the margins of the view
        share = (end - begin) / 4
        for its, expected in (zoomed, (begin + share, begin + 2 * share)), (panned, [edge + share / 4 for edge in zoomed]):
            for edge, wanted in zip(its, expected):
                self.assertAlmostEqual(edge, wanted, delta=share / 10)
        self.assertAlmostEqual(row[1] - row[0], 200 + 4.97 + 15.98, delta=0.1)
        self.assertRegex(found["reading"], r"^frame 18[345], sensor 0, .*detail nearest sample")

    def test_part(self):
        found = self.look("return {rows: text('#exposures tbody tr').length, range: range()[0], part: text('#part')[0]}",
                          "--from", "2960", "--to", "3180", HANDHELD)
        self.assertEqual((found["rows"], found["range"]), (15, [2960, 3180]))
        self.assertIn("from 2960 to 3180 ms", found["part"])
        self.assertIn("the session ends 10030.997 ms", self.replay("--html", "p.html", "--from", "20000", HANDHELD, status=2))

    def test_text_from_outside_stays_text(self):
        name = "<b>&amp;\"<!--<script>alert(1)"
        self.write(name, HANDHELD.read_text())
        self.assertEqual(self.look("return [text('h1')[0], document.title, document.querySelectorAll('b').length]", name),
                         [name, name, 0])

    def test_accuracy(self):
        (self.folder / "<").mkdir()
        truth = self.write("<" + "/script>", HANDHELD.with_suffix(".truth.csv").read_text())
        printed = self.replay("accuracy", "--truth", "<" + "/script>", HANDHELD)
        found = self.look("return {accuracy: text('#accuracy:not([hidden]) pre')[0], rows: text('#exposures tbody tr').length}",
                          "accuracy", "--truth", "<" + "/script>", HANDHELD)
        self.assertEqual(found, {"accuracy": printed, "rows": 691})
        self.assertTrue(truth.exists())

    def test_two_sensors_and_one_with_nothing_to_draw(self):
        lines = HANDHELD.read_text().splitlines(keepends=True)[:200]
        other = [line.replace('"sensor":0', '"sensor":3').replace('"samples":5', '"samples":6').replace('"type":5', '"type":6')
                 for line in lines]
        session = self.write("two.jsonl", "".join(lines + other + [
            '{"call":"fillLscOISCompInfo","sensor":1,"metadata":null}\n']))
        found = self.look("return {headings: text('#sensors h2'), graphs: text('.graph').length,"
                          "counts: [0, 3, 1].map(id => choose('sensor', `${id}`).length)}", session)
        self.assertEqual(found["headings"], ["Sensor 0", "Sensor 1", "Sensor 3"])
        self.assertEqual(found["graphs"], 6)
        self.assertEqual(found["counts"], [found["counts"][0]] * 2 + [1])

    def test_a_long_session_is_reduced_and_the_page_says_so(self):
        lines = ['{"platform":"sensor","sensor":0}', '{"call":"RegisterAndStartSensorMonitor","sensor":0,"type":5}']
        for batch in range(7):
            rows = [[(batch * 10_000 + i) * 1_000_000, 0, 0, i % 7 - 3, 0] for i in range(1, 10_001)]
            lines += [json.dumps({"samples": 5, "data": rows}),
                      json.dumps({"call": "UpdateSensorData", "sensor": 0, "frame": batch, "timestamp": rows[0][0]})]
        for i in range(3001):
            start = {"tag": 0xC0010017, "int64": [(i + 100) * 20_000_000]}
            block = {"tag": 0xC0030000, "memory": {"size": 4712, "u64": {"4592": 1_000_000}}}
            lines += [json.dumps({"metadata": "m", "entries": [start, block]}),
                      '{"call":"fillLscOISCompInfo","sensor":0,"metadata":"m"}']
        found = self.look("return {samples: data.sensors[0].samples.split('\\n').length, notes: text('.note'),"
                          "shown: text('#shown'),"
                          "choices: text('#outcome option'), chunk: byId('exposures').tBodies[0].rows.length}",
                          self.write("long.jsonl", "\n".join(lines)))
        self.assertLess(found["samples"], 61_000)
        self.assertTrue(any(note.startswith("Of 70,000 samples,") for note in found["notes"]), found["notes"])
        self.assertTrue(any("one in 2 of “" in note for note in found["notes"]), found["notes"])
        self.assertEqual((found["chunk"], found["shown"]), (1000, ["1,000 of 1,501 shown"]))
        self.assertEqual(found["choices"][0], "all: 3,001")

    def test_a_session_without_exposures(self):
        session = self.write("none.jsonl", '{"call":"IsEnabled","sensor":0}\n')
        self.assertEqual(self.look("return [text('#findings p'), text('#shown')]", session), [["None."], ["0 of 0 shown"]])


if __name__ == "__main__":
    unittest.main()
