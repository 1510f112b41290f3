"""A pool of two worker processes with short tasks; each worker is replaced after four."""
import multiprocessing
import time


def task(_):
    end = time.process_time() + 0.1
    while time.process_time() < end:
        pass


if __name__ == "__main__":
    with multiprocessing.Pool(2, maxtasksperchild=4) as pool:
        while True:
            pool.map(task, range(40), chunksize=1)
