#!/usr/bin/env python3
"""Checks the benchmark's inputs and its verdicts: the generated job has the
shape it claims, and the goals are judged right at their edges. Nothing here
is timed."""

import importlib.machinery
import importlib.util
import os
import re
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


def load_bench():
    loader = importlib.machinery.SourceFileLoader("bench", os.path.join(ROOT, "scripts", "bench"))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader("bench", loader))
    loader.exec_module(module)
    return module


bench = load_bench()


class JobShapeTest(unittest.TestCase):
    CASES = (
        # (size asked, page size, least pages)
        (0, 30_000, 1),
        (2_000_000, 100_000, 18),
        (5_000_000, 100_000, 45),
    )

    def test_structure_of_generated_jobs(self):
        for size, page_size, least_pages in self.CASES:
            with self.subTest(size=size):
                data = b"".join(bench.job_bytes_iter(size, 1, page_size))
                self.assertTrue(data.startswith(b"%!PS-Adobe-3.0\n"))
                self.assertTrue(data.endswith(b"%%EOF\n"), "every line ends with a line feed")
                lines = data[:-1].split(b"\n")
                count = lambda text: sum(1 for line in lines if line == text)
                pages = count(b"ep")
                self.assertGreaterEqual(pages, least_pages)
                for marker in (b"bp", b"%%EndPageSetup", b"showpage"):
                    self.assertEqual(count(marker), pages, marker)
                self.assertEqual(len([l for l in lines if l.startswith(b"%%Page: ")]), pages)
                self.assertIn(b"%%%%Pages: %d" % pages, lines)
                for marker in (b"%%BeginProlog", b"%%EndProlog", b"%%BeginSetup", b"%%EndSetup"):
                    self.assertEqual(count(marker), 1, marker)
                self.assertLess(lines.index(b"%%EndProlog"), lines.index(b"%%EndSetup"))
                self.assertLess(lines.index(b"%%EndSetup"), lines.index(b"bp"))
                if size >= 1_000_000:
                    # Pages of the size asked, the whole within one page of the target.
                    self.assertLess(abs(len(data) - size), page_size)
                    self.assertAlmostEqual(len(data) / pages, page_size, delta=page_size * 0.1)

    def test_setup_carries_the_feature_code_the_insertion_mode_reads(self):
        data = bench.one_page_job()
        setup = data[data.index(b"%%BeginSetup"):data.index(b"%%EndSetup")]
        for keyword, choice, _ in bench.FEATURES:
            self.assertIn(b"\n%%BeginFeature: *" + keyword.encode() + b" " + choice.encode() + b"\n", setup)
        self.assertEqual(setup.count(b"%%BeginFeature:"), setup.count(b"%%EndFeature"))


def summary(name, mb_per_s=100.0, wall=1.0, rss=8000, size=10, out=None):
    return {"name": name, "mb_per_s": mb_per_s, "wall_s_median": wall, "maxrss_kb": rss,
            "input_bytes": size, "output_bytes": size if out is None else out}


class GoalTest(unittest.TestCase):
    def verdict(self, results, goal):
        return next(v for v in bench.evaluate_goals(results) if v["goal"] == goal)

    def test_goals_at_their_edges(self):
        cases = (
            # (goal, results, met)
            ("throughput_vs_pstops", [summary("pass.pstozpjl", 300), summary("pass.pstops", 100)], True),
            ("throughput_vs_pstops", [summary("pass.pstozpjl", 299), summary("pass.pstops", 100)], False),
            ("throughput_vs_cat", [summary("pass.pstozpjl", 80), summary("pass.cat", 100)], True),
            ("throughput_vs_cat", [summary("pass.pstozpjl", 79.9), summary("pass.cat", 100)], False),
            ("insertion_vs_pstops", [summary("insertion.pstozpjl", 150), summary("insertion.pstops", 100)], True),
            ("insertion_vs_cat", [summary("insertion.pstozpjl", 39), summary("pass.cat", 100)], False),
            ("latency_vs_pstops", [summary("latency.pstozpjl", wall=0.010), summary("latency.pstops", wall=0.010)],
             True),
            ("latency_vs_pstops", [summary("latency.pstozpjl", wall=0.011), summary("latency.pstops", wall=0.010)],
             False),
            ("rss_vs_pstops_pass", [summary("pass.pstozpjl", rss=8000), summary("pass.pstops", rss=8000)], True),
            ("rss_vs_pstops_pass", [summary("pass.pstozpjl", rss=8001), summary("pass.pstops", rss=8000)], False),
            ("rss_growth_pass", [summary("pass.pstozpjl", rss=8511), summary("small.pass.pstozpjl", rss=8000)], True),
            ("rss_growth_pass", [summary("pass.pstozpjl", rss=8512), summary("small.pass.pstozpjl", rss=8000)], False),
            ("rss_growth_insertion", [summary("insertion.pstozpjl", rss=7000),
                                      summary("small.insertion.pstozpjl", rss=8000)], True),
        )
        for goal, runs, met in cases:
            with self.subTest(goal=goal, runs=runs):
                verdict = self.verdict({r["name"]: r for r in runs}, goal)
                self.assertIs(verdict["met"], met)
                self.assertIsNotNone(verdict["value"])

    def test_a_run_that_lost_output_or_is_missing_meets_nothing(self):
        results = {"pass.pstozpjl": summary("pass.pstozpjl", 1000, out=5), "pass.pstops": summary("pass.pstops")}
        verdict = self.verdict(results, "throughput_vs_pstops")
        self.assertFalse(verdict["met"])
        self.assertIn("pass.pstozpjl", verdict["note"])
        verdict = self.verdict(results, "throughput_vs_cat")
        self.assertFalse(verdict["met"])
        self.assertEqual(verdict["note"], "not measured")

    def test_table_names_each_verdict(self):
        results = {r["name"]: r for r in (summary("pass.pstozpjl", 300), summary("pass.pstops", 100))}
        for r in results.values():
            r.update(runs=3, cpu_s_median=0.5)
        table = bench.format_table(results, bench.evaluate_goals(results))
        self.assertRegex(table, r"pass-through MB/s / pstops MB/s\s+3\.000\s+>= 3\s+met")
        self.assertRegex(table, r"pass-through MB/s / cat MB/s\s+-\s+>= 0.8\s+MISSED \(not measured\)")
        self.assertEqual(len(re.findall(r"\bmet\b|MISSED", table)), len(bench.GOALS))


if __name__ == "__main__":
    unittest.main()
