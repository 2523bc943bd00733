import java.util.ArrayList;
import java.util.List;
import orva.CircularVoting;
import orva.Settings;

/**
 * Calls that must be refused before anything native happens. As a program it makes them all, and at
 * last a right one.
 */
final class UsageErrors {
  record Call(String refusal, Runnable action) {
    @Override
    public String toString() {
      return refusal;
    }
  }

  private static final Settings SMALL = new Settings(1, 0, 1);

  private UsageErrors() {}

  static List<Call> all() {
    List<Call> calls = new ArrayList<>();
    add(calls, "The pixel array is null", null, 3, 4, SMALL);
    add(calls, "The settings are null", new int[12], 3, 4, null);
    add(calls, "The image size 4 x -3 is negative", new int[12], -3, 4, SMALL);
    add(calls, "The image size -4 x 3 is negative", new int[12], 3, -4, SMALL);
    add(calls, "The image size -4 x -3 is negative", new int[12], -3, -4, SMALL);
    add(calls, "The image size -1 x 0 is negative", new int[0], 0, -1, SMALL);
    add(calls, notOf("4 x 3", 11), new int[11], 3, 4, SMALL);
    add(calls, notOf("4 x 3", 13), new int[13], 3, 4, SMALL);
    add(calls, notOf("4 x 3", 0), new int[0], 3, 4, SMALL);
    add(calls, notOf("0 x 3", 1), new int[1], 3, 0, SMALL);
    // The lowest 32 bits of these products are the lengths of the arrays.
    add(calls, notOf("65536 x 65536", 0), new int[0], 65536, 65536, SMALL);
    add(calls, notOf("65537 x 65536", 65536), new int[65536], 65536, 65537, SMALL);
    addTooLarge(calls, 1, 4);
    addTooLarge(calls, 6, 9);
    addTooLarge(calls, 10, 13);
    addTooLarge(calls, 20, 23);
    addTooLarge(calls, 30, 34); // 33 with a cone that is not rounded up
    addTooLarge(calls, 1000, 1033);
    for (int radius : new int[] {0, -1, 1001, Integer.MIN_VALUE, Integer.MAX_VALUE}) {
      String refusal = "The maximum radius must be 1 to 1000, not " + radius;
      calls.add(new Call(refusal, () -> new Settings(radius, 200, 3)));
      calls.add(new Call(refusal, () -> new Settings(radius)));
    }
    for (int scale : new int[] {0, -1, 1001}) {
      calls.add(new Call(
          "The scale must be 1 to 1000, not " + scale, () -> new Settings(20, 200, scale)));
    }
    for (int threshold : new int[] {-1, Integer.MIN_VALUE}) {
      calls.add(new Call("The threshold must be at least 0, not " + threshold,
          () -> new Settings(20, threshold, 3)));
    }
    return calls;
  }

  private static String notOf(String size, int length) {
    return "An image of " + size + " pixels needs an array of as many, not of " + length;
  }

  /** One pixel more than 16 bits allow, in either direction. */
  private static void addTooLarge(List<Call> calls, int radius, int margin) {
    int side = Short.MAX_VALUE - 2 * margin + 1;
    String rest = " pixels is too large: its longer side and twice the margin of " + margin
        + " pixels must not exceed 32767";
    Settings settings = new Settings(radius, 0, 1);
    add(calls, "An image of " + side + " x 1" + rest, new int[side], 1, side, settings);
    add(calls, "An image of 1 x " + side + rest, new int[side], side, 1, settings);
  }

  private static void add(
      List<Call> calls, String refusal, int[] pixels, int height, int width, Settings settings) {
    calls.add(new Call(refusal, () -> CircularVoting.find(pixels, height, width, settings)));
  }

  public static void main(String[] arguments) {
    List<Call> calls = all();
    calls.add(new Call("", () -> CircularVoting.find(new int[12], 3, 4, SMALL)));
    for (Call call : calls) {
      try {
        call.action().run();
        System.out.println("no refusal");
      } catch (IllegalArgumentException e) {
        System.out.println(e.getMessage());
      } catch (UnsatisfiedLinkError e) {
        System.out.println("no library");
      }
    }
  }
}
