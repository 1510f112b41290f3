// Writes the opacities of pictures as C++: pixmap-table OUTPUT [SYMBOL SIZE FILE.png]...

#include <png.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace {

std::vector<std::uint8_t> opacities(const std::string& file, std::size_t size) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  std::vector<std::uint8_t> pixels(size * size * 4);
  if (png_image_begin_read_from_file(&image, file.c_str()) == 0 || image.width != size ||
      image.height != size) {
    std::cerr << "pixmap-table: " << file << " is not " << size << " pixels square\n";
    std::exit(1);
  }
  image.format = PNG_FORMAT_RGBA;
  if (png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr) == 0) {
    std::cerr << "pixmap-table: " << file << ": " << image.message << "\n";
    std::exit(1);
  }
  std::vector<std::uint8_t> result;
  for (std::size_t alpha = 3; alpha < pixels.size(); alpha += 4)
    result.push_back(pixels[alpha]);
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments.size() < 4 || arguments.size() % 3 != 1) {
    std::cerr << "usage: pixmap-table OUTPUT [SYMBOL SIZE FILE.png]...\n";
    return 2;
  }
  std::ofstream output(arguments[0]);
  std::string table;
  for (std::size_t i = 1; i < arguments.size(); i += 3) {
    const std::string name = "kOpacities" + std::to_string(i / 3);
    const std::string& size = arguments[i + 1];
    output << "constexpr std::uint8_t " << name << "[] = {";
    for (const std::uint8_t opacity : opacities(arguments[i + 2], std::stoul(size)))
      output << unsigned{opacity} << ",";
    output << "};\n";
    table += "    {\"" + arguments[i] + "\", " + size + ", " + name + "},\n";
  }
  output << "constexpr StatusPixmap kPixmaps[] = {\n" << table << "};\n";
  return output.flush() ? 0 : 1;
}
