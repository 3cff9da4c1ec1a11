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
function choose(id, pattern) {
  byId(id).selectedIndex = [...byId(id).options].findIndex(({ text }) => pattern.test(text));
  byId(id).onchange();
  return byId('exposures').tBodies[0].rows;
}
// Of each row and column of pixels, whether there is a colour; the grid is grey.
function coloured(box) {
  const canvas = box.querySelector('canvas'), { width, height } = canvas;
  const copy = new OffscreenCanvas(width, height).getContext('2d');
  copy.drawImage(canvas, 0, 0);
  const { data: pixels } = copy.getImageData(0, 0, width, height);
  const rows = Array(height).fill(0), columns = Array(width).fill(0);
  for (let i = 0; i < pixels.length; i += 4)
    if (pixels[i] !== pixels[i + 1]) rows[Math.floor(i / 4 / width)] = columns[i / 4 %% width] = 1;
  return { rows: rows.join(''), columns: columns.join('') };
}
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
        self.assertEqual([line for line in done.stderr.splitlines() if "CONSOLE" in line], [])
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

    def test_findings_have_the_figures_of_the_summary(self):
        lines = HANDHELD.read_text().splitlines(keepends=True)
        at = [i for i, line in enumerate(lines) if '"samples"' in line][200]
        stamp = int(re.search(r"\[(\d+),[^[]*\]\]\}", lines[at])[1])
        lines[at] = lines[at].replace(str(stamp), str(stamp + 10**11))
        session = self.write("future.jsonl", "".join(lines))
        found = self.look("return [text('#findings td:nth-child(3)')[0], data.summary.findings[0]]", session, "--summary", "s.json")
        finding = json.loads((self.folder / "s.json").read_text())["findings"][0]
        self.assertEqual((finding["code"], finding["stamp_ns"]), ("future-stamp", stamp + 10**11))
        self.assertIn(f"stamp_ns {stamp + 10**11}, ", found[0])

    def test_filter(self):
        found = self.look("const rows = choose('outcome', /within/);"
                          "return {texts: [...rows].map(row => row.lastChild.textContent), shown: text('#shown'),"
                          "all: choose('outcome', /all/).length}", HANDHELD)
        self.assertEqual([text.startswith("nearest sample") for text in found["texts"]], [True] * 3)
        self.assertEqual((found["shown"], found["all"]), (["3 of 3 shown"], 691))

    def test_zoom_pan_and_reading(self):
        found = self.look(
            "const frames = document.querySelector('.frames'), x = document.querySelector('.x'), steps = [range()[0]];"
            "drag(x, 0.25, 0.5); steps.push(range()[0]);"
            "drag(frames, 0.5, 0.25, {shiftKey: true}); steps.push(range()[0]);"
            "choose('outcome', /all/)[183].onclick(); steps.push(range()[0]);"
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

    def test_device_differences(self):
        lines = HANDHELD.read_text().splitlines(keepends=True)
        asked = [i for i, line in enumerate(lines) if "fillLscOISCompInfo" in line][:9]
        self.write("short.jsonl", "".join(lines[:asked[-1] + 1]))
        self.replay("--csv", "rows.csv", "short.jsonl")
        rows = [row.split(",")[6:8] for row in (self.folder / "rows.csv").read_text().splitlines()[1:]]
        here = [[float(value or 0) for value in row] for row in rows]
        cases = {0: ((1.5, -2.5), "only there: 1.5, -2.5"), 1: (None, "agrees"), 3: ((0, 0), "agrees"),
                 4: ((0.25, 0), "off by 0.25, 0"), 5: (None, "only here"), 6: ((-0.001, 20), "off by -0.001, 20")}
        for case, (device, _) in cases.items():
            x, y = (f"{at + by:.6f}" for at, by in zip(here[case], device)) if device else (None, None)
            lines[asked[case]] += "#expect " + json.dumps({"sensor": 0, "type": 1, "x": x, "y": y}) + "\n"
        found = self.look(
            "const listed = (id, pattern) => [...choose(id, pattern)].map(row => [Number(row.cells[1].textContent) - 1, "
            "  row.className, row.cells[row.cells.length - 2].textContent]);"
            "const all = listed('device', /^all/), filters = text('#device option');"
            "const frames = [/^differs/, /^different/, /only/, /more than/].map(its => listed('device', its).map(([i]) => i));"
            "choose('device', /differs/);"
            "return {all, filters, frames, both: listed('outcome', /fewer/).length, legend: text('.legend span')}",
            self.write("device.jsonl", "".join(lines[:asked[-1] + 1])))
        differing = [case for case, (_, text) in cases.items() if text != "agrees"]
        self.assertEqual(found["all"], [[i, "differs" if i in differing else "", cases.get(i, (0, ""))[1]] for i in range(9)])
        self.assertEqual(found["filters"], ["all", "differs: 4", "different positions: 2", "a position on the device only: 1",
                                            "a position here only: 1", "off by more than 1"])
        self.assertEqual((found["frames"], found["both"]), ([differing, [4, 6], [0], [6]], 1))
        self.assertLessEqual(set(found["filters"][2:5]), set(found["legend"]))

    def test_axis_follows_the_zoom(self):
        samples = [[i * 600_000_000_000, 0, 0, i, 0] for i in range(1, 8)]
        session = self.write("hour.jsonl", json.dumps({"samples": 5, "data": samples}) + """
            {"platform":"sensor","sensor":0}
            {"call":"RegisterAndStartSensorMonitor","sensor":0,"type":5}
            {"call":"UpdateSensorData","sensor":0,"frame":1,"timestamp":1}""")
        found = self.look("const seen = [], look = () => seen.push([range()[0], text('.y .dygraph-axis-label-x')]); look();"
                          "for (const share of [0.01, 0.01]) {"
                          "  drag(document.querySelector('.x'), 0.5, 0.5 + share); look(); }"
                          "return seen", session)
        self.assertEqual(found[0][1], [f"{i} min" for i in range(0, 60, 10)] + [""])  # the last would stand beside its line
        for ((begin, end), labels), (unit, ms) in zip(found, [("min", 60_000), ("s", 1000), ("ms", 1)]):
            times = [float(its.removesuffix(" " + unit).replace(",", "")) * ms for its in labels if its]
            self.assertGreater(len(times), 3)
            self.assertTrue(begin <= times[0] and times[-1] <= end, (begin, times, end))
            for i, time in enumerate(times):
                self.assertAlmostEqual(time, times[0] + i * (times[1] - times[0]), places=3)

    def test_frames_keep_apart_and_the_strip_together(self):
        zoomed = self.look("choose('outcome', /all/)[183].onclick(); return coloured(document.querySelector('.frames')).rows", HANDHELD)
        self.assertRegex(zoomed, "^0*1+0{4,9}1+0*$")
        short = "".join(line for line in HANDHELD.read_text().splitlines(keepends=True) if "StoreRollingShutter" not in line)
        strip = self.look("return coloured(document.querySelector('.frames')).columns", self.write("short.jsonl", short))
        self.assertRegex(strip, "^0*1+0{1,3}1+0*$")  # a frame is missing

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
        found = self.look("return {accuracy: text('#accuracy:not([hidden]) pre')[0], errors: data.sensors[0].exposures"
                          "  .map(({cells}) => cells[12])}", "accuracy", "--truth", "<" + "/script>", HANDHELD)
        self.assertEqual((found["accuracy"], len(found["errors"])), (printed, 691))
        squares = [float(error)**2 for error in found["errors"] if error]
        rms = f"{(sum(squares) / len(squares))**0.5:.3f}"
        self.assertEqual(re.search(r"\nmean +(\d+) +(\S+)", printed).groups(), (str(len(squares)), rms))
        self.assertTrue(truth.exists())

    def test_two_sensors_and_one_with_nothing_to_draw(self):
        lines = HANDHELD.read_text().splitlines(keepends=True)[:200]
        other = [line.replace('"sensor":0', '"sensor":3').replace('"samples":5', '"samples":6').replace('"type":5', '"type":6')
                 for line in lines]
        session = self.write("two.jsonl", "".join(lines + other + [
            '{"call":"fillLscOISCompInfo","sensor":1,"metadata":null}\n']))
        found = self.look("return {headings: text('#sensors h2'), graphs: text('.graph').length,"
                          "counts: [/0/, /3/, /1/].map(id => choose('sensor', id).length)}", session)
        self.assertEqual(found["headings"], ["Sensor 0", "Sensor 1", "Sensor 3"])
        self.assertEqual(found["graphs"], 6)
        self.assertEqual(found["counts"], [found["counts"][0]] * 2 + [1])

    def test_a_long_session_is_reduced_and_the_page_says_so(self):
        lines = ['{"platform":"sensor","sensor":0,"otp_layout":{"oisCalibration":{"offset":4,"size":4,"valid":3,"indexNum":1,'
                 '"tableNumber":2},"enable":1},"otp":"0000000101020304"}',
                 '{"call":"RegisterAndStartSensorMonitor","sensor":0,"type":5}']
        for batch in range(7):
            rows = [[(batch * 10_000 + i) * 1_000_000, 0, 0, i % 7 - 3, -batch * 10_000 - i] for i in range(1, 10_001)]
            lines += [json.dumps({"samples": 5, "data": rows}),
                      json.dumps({"call": "UpdateSensorData", "sensor": 0, "frame": batch, "timestamp": 1})]
        for i in range(3001):
            start = {"tag": 0xC0010017, "int64": [(i + 100) * 20_000_000]}
            block = {"tag": 0xC0030000, "memory": {"size": 4712, "u64": {"4592": 20_000_000}}}
            lines += [json.dumps({"metadata": "m", "entries": [start, block]}),
                      '{"call":"fillLscOISCompInfo","sensor":0,"metadata":"m"}']
        lines.insert(-2 * 2999, '#expect {"sensor":0,"type":1,"x":"1.000000","y":"1.000000"}')  # for the second exposure
        found = self.look("const drawn = () => ['.frames', '.y'].map(its => coloured(document.querySelector(its)).columns);"
                          "const whole = drawn(); drag(document.querySelector('.x'), 0.4, 0.45); const part = drawn();"
                          "drag(document.querySelector('.x'), 0.4, 0.45);"
                          "return {samples: data.sensors[0].samples.trim().split('\\n'), notes: text('.note'),"
                          "drawn: [...whole, ...part, ...drawn()], shown: text('#shown'),"
                          "choices: text('#outcome option'), chunk: byId('exposures').tBodies[0].rows.length,"
                          "differing: choose('device', /differs/).length}",
                          self.write("long.jsonl", "\n".join(lines)))
        self.assertLess(len(found["samples"]), 61_000)
        heights = [float(sample.split()[2]) for sample in found["samples"]]
        self.assertEqual(heights, sorted(heights, reverse=True))
        shares = [its.strip("0").count("1") / len(its) for its in found["drawn"]]
        # Frames and trace: whole; nearer, where a listed frame still stands for two; so near that points are missing.
        self.assertEqual([share > 0.7 for share in shares], [True] * 4 + [False] * 2, shares)
        self.assertTrue(any(note.startswith("Of 70,000 samples,") for note in found["notes"]), found["notes"])
        self.assertTrue(any("one in 2 of “" in note for note in found["notes"]), found["notes"])
        self.assertEqual((found["chunk"], found["shown"], found["differing"]), (1000, ["1,000 of 1,501 shown"], 1))
        self.assertEqual(found["choices"][0], "all: 3,001")

    def test_a_session_without_samples(self):
        text = HANDHELD.read_text().splitlines(keepends=True)
        session = self.write("silent.jsonl", "".join(line for line in text if '"samples"' not in line))
        found = self.look("return [document.querySelectorAll('.graph.empty').length, text('.dygraph-axis-label-y').join('')]", session)
        self.assertEqual(found, [2, ""])

    def test_a_session_without_exposures(self):
        session = self.write("none.jsonl", '{"call":"IsEnabled","sensor":0}\n')
        self.assertEqual(self.look("return [text('#findings p'), text('#shown')]", session), [["None."], ["0 of 0 shown"]])


if __name__ == "__main__":
    unittest.main()
