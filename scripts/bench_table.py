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
    """A bar and a mark for each job: this library and Boost.Filesystem, relative to std::filesystem."""
    rows = {job: (times["ko"] / times["std"], times["boost"] / times["std"])
            for job, times in jobs.items() if {"ko", "std", "boost"} <= times.keys()}
    left, unit, pitch, top, most = 240, 200, 14, 64, 2
    width, height = left + most * unit + 50, top + len(rows) * pitch + 8
    ko, std, boost = "#1f6feb", "#57606a", "#d4a72c"

    def x(ratio):
        return left + min(ratio, most) * unit

    yield (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
           f'viewBox="0 0 {width} {height}" font-family="sans-serif" font-size="11">')
    yield '<rect width="100%" height="100%" fill="white"/>'
    yield (f'<text x="{left}" y="16" font-size="13" font-weight="bold">'
           'Time, relative to std::filesystem: shorter is faster</text>')
    yield (f'<rect x="{left}" y="27" width="24" height="8" fill="{ko}"/>'
           f'<text x="{left + 30}" y="35">ko::filesystem</text>')
    yield (f'<rect x="{left + 150}" y="25" width="4" height="12" fill="{boost}"/>'
           f'<text x="{left + 160}" y="35">Boost.Filesystem</text>')
    yield (f'<line x1="{left + 290}" y1="25" x2="{left + 290}" y2="37" stroke="{std}" stroke-dasharray="3 3"/>'
           f'<text x="{left + 298}" y="35">std::filesystem</text>')
    for tick in (0, 0.5, 1, 1.5, 2):
        yield f'<text x="{x(tick)}" y="54" fill="{std}" text-anchor="middle">{tick}</text>'
        yield f'<line x1="{x(tick)}" y1="58" x2="{x(tick)}" y2="{height - 6}" stroke="#d8dee4"/>'
    for number, (job, (own, other)) in enumerate(sorted(rows.items(), key=lambda row: row[1])):
        y = top + number * pitch
        yield f'<text x="{left - 8}" y="{y + 9}" text-anchor="end">{job}</text>'
        yield f'<rect x="{left}" y="{y + 1}" width="{x(own) - left:.1f}" height="8" fill="{ko}"/>'
        yield f'<rect x="{x(other) - 2:.1f}" y="{y - 1}" width="4" height="12" fill="{boost}"/>'
        beyond = [f'<tspan fill="{colour}">{ratio:.1f}</tspan>'
                  for ratio, colour in ((own, ko), (other, "#8a6d1a")) if ratio > most]
        if beyond:
            yield f'<text x="{x(most) + 6}" y="{y + 9}">{" ".join(beyond)}</text>'
    yield f'<line x1="{x(1)}" y1="58" x2="{x(1)}" y2="{height - 6}" stroke="{std}" stroke-dasharray="3 3"/>'
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
