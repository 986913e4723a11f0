#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <thread>
#include <vector>

/// The floor of reading light paths from CSV: maps the file into memory, and
/// turns the text of every number into a double. Nothing is checked, kept or
/// written but the sum of the numbers.
///
///     csv_floor PATHS.csv THREADS
namespace {

/// The sum of the numbers in whole lines of text; what stands up to the first
/// comma of a line, its type, is passed over.
double SumOfNumbers(const char* at, const char* end) {
  double sum = 0.0;
  while (at < end) {
    const auto* lineEnd = static_cast<const char*>(
        std::memchr(at, '\n', static_cast<std::size_t>(end - at)));
    if (lineEnd == nullptr) lineEnd = end;
    at = std::find(at, lineEnd, ',');
    while (at < lineEnd) {
      ++at;  // the comma
      double number = 0.0;
      at = std::from_chars(at, lineEnd, number).ptr;
      sum += number;
    }
    at = lineEnd + 1;
  }
  return sum;
}

int Run(const char* path, std::size_t threads) {
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  struct stat status = {};
  if (file < 0 || fstat(file, &status) != 0 || status.st_size == 0) return 1;
  const auto size = static_cast<std::size_t>(status.st_size);
  void* const mapped = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
  if (mapped == MAP_FAILED) return 1;
  const char* const text = static_cast<const char*>(mapped);
  const char* const end = text + size;

  std::vector<double> sums(threads);
  std::vector<std::thread> workers;
  const char* begin = std::find(text, end, '\n');  // after the header
  for (std::size_t i = 0; i < threads; ++i) {
    const char* const stop =
        i + 1 == threads
            ? end
            : std::find(std::max(begin, text + size / threads * (i + 1)), end,
                        '\n');
    workers.emplace_back([=, &sums] {
      sums[i] = SumOfNumbers(std::min(begin + 1, stop), stop);
    });
    begin = stop;
  }
  for (std::thread& worker : workers) worker.join();

  double sum = 0.0;
  for (const double s : sums) sum += s;
  std::cout << sum << "\n";
  munmap(mapped, size);
  close(file);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::size_t threads =
      argc == 3 ? std::strtoul(argv[2], nullptr, 10) : 0;
  if (threads == 0) return 2;
  const int status = Run(argv[1], threads);
  if (status != 0) std::cerr << "cannot map " << argv[1] << "\n";
  return status;
}
