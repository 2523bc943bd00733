import java.lang.reflect.Method;
import java.net.URL;
import java.net.URLClassLoader;
import java.nio.file.Path;
import java.util.HashSet;
import java.util.List;
import java.util.Set;

/** Takes the classes of the jar that the argument names by two class loaders, and finds by both. */
final class LoadTwice {
  private LoadTwice() {}

  public static void main(String[] arguments) throws Exception {
    URL[] jar = {Path.of(arguments[0]).toUri().toURL()};
    ClassLoader parent = ClassLoader.getPlatformClassLoader();
    Set<Class<?>> classes = new HashSet<>();
    try (URLClassLoader first = new URLClassLoader(jar, parent);
         URLClassLoader second = new URLClassLoader(jar, parent)) {
      for (ClassLoader loader : List.of(first, second, first)) {
        Class<?> settings = loader.loadClass("orva.Settings");
        Class<?> voting = loader.loadClass("orva.CircularVoting");
        Method find = voting.getMethod("find", int[].class, int.class, int.class, settings);
        Pgm image = Pgm.black(40, 30).with(22, 14, 6);
        Object small = settings.getConstructor(int.class).newInstance(8);
        System.out.println(find.invoke(null, image.pixels(), 30, 40, small));
        classes.add(voting);
      }
    }
    System.out.println(
        classes.size() + " classes, " + ReportLoading.loaded().count() + " libraries");
  }
}
