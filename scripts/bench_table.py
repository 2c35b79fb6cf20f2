#!/usr/bin/env python3
"""Converts the output of the benchmarks (JSON) and of the counting program (lines) into Markdown tables and
a chart.

    bench_table.py BENCH.json [FIGURES.tsv] [--chart CHART.svg]
"""
import argparse
import json
import os
import platform
import re

PEERS = ("limit", "floor", "std", "boost", "simdutf")


def read_times(path):
    """The median nanoseconds of each way of each job, those of threads separately, and the run's context."""
    with open(path, encoding="utf-8") as file:
        run = json.load(file)
    jobs, threads = {}, {}
    for result in run["benchmarks"]:
        if result.get("aggregate_name") != "median":
            continue
        name = result["run_name"].replace("/real_time", "")
        job, way, count = re.fullmatch(r"(.*)/(\w+?)(?:/threads:(\d+))?", name).groups()
        if count:
            threads.setdefault(job, {})[int(count)] = result["real_time"]
        else:
            jobs.setdefault(job, {})[way] = result["cpu_time"]
    return jobs, threads, run["context"]


def read_figures(path):
    """The allocations, system calls and instructions of each way of each job."""
    jobs = {}
    with open(path, encoding="utf-8") as file:
        for line in file:
            job, way, *counts = line.rstrip("\n").split("\t")
            jobs.setdefault(job, {})[way] = counts
    return jobs


def table(head, rows):
    yield "| " + " | ".join(head) + " |"
    yield "|---" + "|---:" * (len(head) - 1) + "|"
    for row in rows:
        yield "| " + " | ".join(row) + " |"


def verdict_of(ratio, target):
    """A ratio close to the target may be on its other side in the next run."""
    if ratio <= 0.96 * target:
        return "met"
    return "at the target" if ratio <= 1.06 * target else "missed"


def time_rows(jobs, context):
    for job, times in sorted(jobs.items()):
        ratios = {way: times["ko"] / times[way] for way in PEERS if way in times}
        target, verdict = context.get("target: " + job, ""), ""
        if target and "limit" in ratios:
            verdict = verdict_of(ratios["limit"], float(target))
        shown = [f"{ratios[way]:.2f}" if way in ratios else "" for way in PEERS]
        yield [job, f"{times['ko']:.0f}", shown[0], target, verdict, *shown[1:]]


def figure_rows(jobs):
    for job, ways in jobs.items():
        cells = [job]
        for kind in range(3):
            known = [ways[way][kind] if way in ways else "–" for way in ("ko", "limit", "std", "boost")]
            cells.append(" / ".join(count or "–" for count in known))
        yield cells


def thread_rows(threads):
    for job, times in sorted(threads.items()):
        # The wall-clock time per call, by whichever thread.
        yield [job] + [f"{times[1] / times[count]:.2f}" for count in sorted(times)]


def machine(context):
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        models = re.findall(r"^model name\s*:\s*(.*)$", file.read(), re.MULTILINE)
    return (f"{models[0] if models else platform.machine()}, {context['num_cpus']} processors, "
            f"Linux {os.uname().release.split('-')[0]}, {' '.join(platform.libc_ver())}, "
            f"g++ {context['compiler']}, Boost {context['boost'].replace('_', '.')}, "
            f"files on {'tmpfs' if context['scratch'].startswith('/dev/shm') else 'a disk'}")


def chart(jobs):
    """Bars of the time of each library, relative to that of std::filesystem."""
    rows = [(job, times) for job, times in sorted(jobs.items()) if {"ko", "std", "boost"} <= times.keys()]
    left, unit, bar, gap = 260, 200, 7, 9
    height = 50 + len(rows) * (3 * bar + gap)
    colours = {"ko": "#1f6feb", "std": "#8c959f", "boost": "#d4a72c"}
    yield (f'<svg xmlns="http://www.w3.org/2000/svg" width="{left + 2 * unit + 60}" '
           f'height="{height}" font-family="sans-serif" font-size="12">')
    yield '<rect width="100%" height="100%" fill="white"/>'
    for number, (way, colour) in enumerate(colours.items()):
        name = {"ko": "ko::filesystem", "std": "std::filesystem", "boost": "Boost.Filesystem"}[way]
        yield f'<rect x="{left + number * 150}" y="8" width="12" height="12" fill="{colour}"/>'
        yield f'<text x="{left + 16 + number * 150}" y="18">{name}</text>'
    for number, (job, times) in enumerate(rows):
        top = 34 + number * (3 * bar + gap)
        yield f'<text x="{left - 8}" y="{top + 2 * bar}" text-anchor="end">{job}</text>'
        for line, (way, colour) in enumerate(colours.items()):
            ratio = times[way] / times["std"]
            width = min(ratio, 2) * unit
            yield (f'<rect x="{left}" y="{top + line * bar}" width="{width:.1f}" '
                   f'height="{bar - 1}" fill="{colour}"/>')
            if ratio > 2:
                yield (f'<text x="{left + 2 * unit + 4}" y="{top + line * bar + 7}" '
                       f'font-size="9">{ratio:.1f}</text>')
    yield (f'<line x1="{left + unit}" y1="28" x2="{left + unit}" y2="{height - 8}" '
           'stroke="#57606a" stroke-dasharray="3 3"/>')
    yield "</svg>"


def main():
    arguments = argparse.ArgumentParser(description=__doc__)
    arguments.add_argument("times")
    arguments.add_argument("figures", nargs="?")
    arguments.add_argument("--chart")
    given = arguments.parse_args()
    jobs, threads, context = read_times(given.times)
    lines = [machine(context) + ".", ""]
    lines += table(("job", "ns", "ko/limit", "target", "", "ko/floor", "ko/std", "ko/boost",
                    "ko/simdutf"), time_rows(jobs, context))
    if threads:
        lines += ["", "Throughput on several threads, relative to one:", ""]
        counts = sorted(next(iter(threads.values())))
        lines += table(["job"] + [f"{count} threads" for count in counts], thread_rows(threads))
    if given.figures:
        lines += ["", "Counted, each as ko / limit / std / boost:", ""]
        lines += table(("job", "allocations", "system calls", "instructions"),
                       figure_rows(read_figures(given.figures)))
    print("\n".join(lines))
    if given.chart:
        with open(given.chart, "w", encoding="utf-8") as file:
            file.write("\n".join(chart(jobs)) + "\n")


if __name__ == "__main__":
    main()
