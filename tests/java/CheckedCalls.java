/** Right calls of the native method; for a Java machine that checks them. */
final class CheckedCalls {
  private CheckedCalls() {}

  public static void main(String[] arguments) {
    int found = 0;
    for (int side : new int[] {0, 1, 40, 64}) {
      Pgm image = Pgm.black(side, side).with(side / 2, side / 2, 6);
      int[] triples =
          new JNICircularVoting().compute(image.pixels(), side, side, 0, 8, 0, 0, 100, 1);
      if (triples[2] > 0)
        found += triples.length / 3;
    }
    System.out.println(found + " centers");
  }
}
