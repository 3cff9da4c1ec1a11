#!/usr/bin/env python3
"""Captures of a hostile shape: what is imported plays, and the time does not grow with the square of anything."""
import unittest

from tool import ToolTest

HUGE = "9" * 400
SECONDS = 60  # a few hundred times what they take


def log(*messages):
    return "".join(f"11-23 12:00:00.{i % 1000:03} 1000 1001 D TarvoShadingCustomUtil: {text}\n"
                   for i, text in enumerate(messages))


def registered(sensor):
    return f"[RegisterSensorMonitor] Register Sensor Monitor sensorId:{sensor} sensorType:5"


def batch(frame, first, position):
    for i in range(60):
        yield (f"[pushValue] index:{i}, timestamp:{first + i * 1000000}, OIS_X:{position} OIS_Y:-{position}, "
               f"oisHall_X:{position} oisHall_Y:{position}")
    last = first + 59000000
    yield f"[pushValue] F:({frame}) dataSize:60 start-end({first}-{last})"
    yield (f"[updateSensorData] update sensor data F:({frame}) TS:({HUGE}) size:60, queue size:{frame}, "
           f"timestamp interval:{first} - {last}")


class Limits(ToolTest):
    def imported(self, text):
        return self.write("session.jsonl", self.replay("import", self.write("capture.txt", text), timeout=SECONDS))

    def test_numbers_of_hundreds_of_digits_give_a_session_that_plays(self):
        messages = [registered(0), f"[StoreRollingShutter] sensorId:0, rolling_shutter:{HUGE} sensorMode:{HUGE}",
                    *batch(1, 10**9, HUGE + ".0"), *batch(2, 10**9 + 6 * 10**7, HUGE),
                    "[fillLscOISCompInfo] is_multiexp_mode:0",
                    f"[fillLscCalcOISValueInputInfo] sof_timestamp:{HUGE} [ne:0][se:0], exposure_time:{HUGE} [ne:0]"
                    "[se:0]",
                    f"[CalcOISValue] sensorId = 0, type = 1, oisCount = 100, sof_timestamp = {HUGE}, exposure_time = "
                    f"{HUGE}, shutter_time = {HUGE}, timeDiff = -{HUGE}"]
        for place in range(len(messages)):
            # One such number more, where a whole number stands.
            with self.subTest(place):
                spoilt = [text.replace(":0", ":" + HUGE, 1) if i == place else text for i, text in enumerate(messages)]
                self.replay(self.imported(log(*spoilt)))

    def test_one_long_line(self):
        for words in ("x" * 240000, "1 " * 120000, "[pushValue] index:" * 14000, "TarvoShadingCustomUtil: " * 10000):
            with self.subTest(words[:12]):
                self.replay(self.imported(log(registered(0), words, "[pushValue] " + words) + words))

    def test_twenty_thousand_monitors(self):
        text = log(*(line for sensor in range(20000) for line in (
            registered(sensor), f"[StoreRollingShutter] sensorId:{sensor}, rolling_shutter:1000 sensorMode:0",
            f"[pushValue] index:0, timestamp:{1000 + sensor}, OIS_X:1.0 OIS_Y:1.0, oisHall_X:1.0 oisHall_Y:1.0",
            f"[updateSensorData] update sensor data F:(1) TS:(5) size:1, queue size:1, timestamp interval:"
            f"{1000 + sensor} - {1000 + sensor}")))
        self.assertGreater(self.imported(text).stat().st_size, 1000000)


if __name__ == "__main__":
    unittest.main()
