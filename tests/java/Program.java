import java.io.File;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.TimeUnit;

/** Runs other programs. */
final class Program {
  record Result(int status, String out, String err) {}

  private Program() {}

  static Result run(List<String> command) throws IOException, InterruptedException {
    return run(command, new File("."));
  }

  static Result run(List<String> command, File folder) throws IOException, InterruptedException {
    Path out = Files.createTempFile("orva-out-", ".txt");
    Path err = Files.createTempFile("orva-err-", ".txt");
    try {
      ProcessBuilder builder = new ProcessBuilder(command).directory(folder);
      // A Java machine reports on standard error that it has read one of these.
      for (String name : List.of("JAVA_TOOL_OPTIONS", "_JAVA_OPTIONS", "JDK_JAVA_OPTIONS"))
        builder.environment().remove(name);
      Process process = builder.redirectOutput(out.toFile()).redirectError(err.toFile()).start();
      if (!process.waitFor(2, TimeUnit.MINUTES)) {
        process.destroyForcibly().waitFor();
        throw new IOException("does not end: " + String.join(" ", command));
      }
      return new Result(process.exitValue(), Files.readString(out), Files.readString(err));
    } finally {
      Files.delete(out);
      Files.delete(err);
    }
  }

  /** The command for one of the test classes in a Java machine, with the jar on its class path. */
  static List<String> java(List<String> options, String mainClass, String... arguments) {
    return java(System.getProperty("orva.jar"), options, mainClass, arguments);
  }

  static List<String> java(
      String classPath, List<String> options, String mainClass, String... arguments) {
    List<String> command = new ArrayList<>();
    command.add(Path.of(System.getProperty("java.home"), "bin", "java").toString());
    command.add("-Djava.library.path="); // no library of this machine, unless the options name it
    command.addAll(options);
    String classes = System.getProperty("orva.classes");
    command.addAll(List.of("-cp", classPath + File.pathSeparator + classes, mainClass));
    command.addAll(List.of(arguments));
    return command;
  }
}
