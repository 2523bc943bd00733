package orva;

import java.lang.reflect.InvocationTargetException;

/** The native library. */
final class NativeLibrary {
  private NativeLibrary() {}

  /**
   * Loads the library unless it is there, by the class of the default package that does this; no
   * named import reaches it.
   *
   * @return an object of that class
   * @throws UnsatisfiedLinkError when the library cannot be loaded
   */
  static Object load() {
    try {
      return Class.forName("JNICircularVoting").getConstructor().newInstance();
    } catch (ReflectiveOperationException e) {
      throw unexpected(e);
    }
  }

  /** What the called code threw, if it is an error. */
  static RuntimeException unexpected(ReflectiveOperationException e) {
    if (!(e instanceof InvocationTargetException))
      throw new LinkageError("The class JNICircularVoting is not as it should be", e);
    if (e.getCause() instanceof Error error)
      throw error;
    return new IllegalStateException(e.getCause());
  }
}
