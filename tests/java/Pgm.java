import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Scanner;
import java.util.stream.IntStream;

/** A grey image of 8 bits, as a binary PGM file holds it. */
record Pgm(int width, int height, int[] pixels) {
  static Pgm read(Path file) throws IOException {
    byte[] bytes = Files.readAllBytes(file);
    String text = new String(bytes, StandardCharsets.ISO_8859_1);
    try (Scanner header = new Scanner(text)) {
      if (!header.next().equals("P5"))
        throw new IOException(file + " is not a binary PGM");
      int width = header.nextInt();
      int height = header.nextInt();
      int begin = bytes.length - width * height;
      if (header.nextInt() != 255 || !text.startsWith("255\n", begin - 4))
        throw new IOException(file + " does not hold one byte for each pixel");
      return new Pgm(
          width, height, IntStream.range(begin, bytes.length).map(i -> bytes[i] & 0xFF).toArray());
    }
  }

  void write(Path file) throws IOException {
    ByteArrayOutputStream out = new ByteArrayOutputStream();
    out.writeBytes(("P5\n" + width + " " + height + "\n255\n").getBytes(StandardCharsets.US_ASCII));
    for (int pixel : pixels) out.write(pixel);
    Files.write(file, out.toByteArray());
  }

  float[] grays() {
    float[] grays = new float[pixels.length];
    for (int i = 0; i < grays.length; ++i) grays[i] = pixels[i];
    return grays;
  }

  Pgm inverted() {
    return new Pgm(width, height, IntStream.of(pixels).map(p -> 255 - p).toArray());
  }

  static Pgm black(int width, int height) {
    return new Pgm(width, height, new int[width * height]);
  }

  /** This image with a bright disc. */
  Pgm with(int x, int y, int radius) {
    int[] drawn = pixels.clone();
    for (int i = 0; i < drawn.length; ++i) {
      int dx = i % width - x;
      int dy = i / width - y;
      if (dx * dx + dy * dy <= radius * radius)
        drawn[i] = 200;
    }
    return new Pgm(width, height, drawn);
  }
}
