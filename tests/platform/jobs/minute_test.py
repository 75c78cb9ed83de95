"""A job of the calendar on the real clock: it takes a minute."""

import datetime
import pathlib
import sys
import time
import unittest

import jobs


class Minute(jobs.JobCase):
    def test_a_time_of_the_calendar_comes_at_the_beginning_of_its_minute(self):
        time.sleep(max(0, 10 - (60 - time.time() % 60)))  # not so late that loading misses the next minute
        self.load("job", "date +%s.%N", StartCalendarInterval=[{}, {"Minute": 99 % 60}])
        runner, begun = self.runner(), time.time()
        next_minute = datetime.datetime.fromtimestamp(begun - begun % 60 + 60)
        self.assertIn(f"next time of its calendar: {next_minute:%Y-%m-%d %H:%M}\n",
                      self.ctl("print", "org.example.job"))
        time.sleep(60 - begun % 60)
        fired = float(self.wait_lines(1)[0])
        self.assertLess(fired - next_minute.timestamp(), 20)  # seconds, on a busy machine
        self.assertGreaterEqual(fired, next_minute.timestamp())
        time.sleep(3)
        self.assertEqual(len(self.lines()), 1)
        self.assertEqual(self.runner(), runner)


if __name__ == "__main__":
    jobs.BUNDLE = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main(verbosity=2)
