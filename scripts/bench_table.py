#!/usr/bin/env python3
"""Prints the medians of a run of the benchmarks (its JSON file) as a Markdown table."""
import json
import re
import sys

WAYS = ("limit", "std", "boost")


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        run = json.load(file)
    jobs = {}
    for result in run["benchmarks"]:
        if result.get("aggregate_name") != "median":
            continue
        name = result["run_name"].replace("/real_time", "")
        job, way = re.fullmatch(r"(.*)/(ko|std|boost|limit)(?:/threads:\d+)?", name).groups()
        jobs.setdefault(job, {})[way] = result["cpu_time"]
    print("| job | ns | ko/limit | ko/std | ko/boost |\n|---|---:|---:|---:|---:|")
    for job, times in sorted(jobs.items()):
        ratios = [f"{times['ko'] / times[way]:.2f}" if way in times else "" for way in WAYS]
        print(f"| {job} | {times['ko']:.0f} | " + " | ".join(ratios) + " |")
    return 0 if jobs else 1


if __name__ == "__main__":
    sys.exit(main())
