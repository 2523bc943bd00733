package orva.imagej;

import ij.Macro;
import ij.macro.Interpreter;
import java.util.List;
import java.util.Optional;

/**
 * The options with which a macro calls a command.
 *
 * @param text flags and {@code key=value}, separated by white space
 */
record MacroOptions(String text) {
  boolean has(String flag) {
    return words().contains(flag);
  }

  /** ImageJ finds the key of one option at the end of a longer one, too. */
  boolean isGiven(String key) {
    return words().stream().anyMatch(word -> word.startsWith(key + "="));
  }

  /** The text of a key, or of the variable of the macro that it names after an ampersand. */
  String value(String key, String usual) {
    return isGiven(key) ? resolved(Macro.getValue(text, key, usual)) : usual;
  }

  /**
   * A number among the options, or a variable of the macro that holds one.
   *
   * @throws IllegalArgumentException when it is none
   */
  double number(String key, double usual) {
    if (!isGiven(key))
      return usual;
    String value = numeral(value(key, ""));
    try {
      return Double.parseDouble(value);
    } catch (NumberFormatException e) {
      throw new IllegalArgumentException(key + " must be a number, not " + value, e);
    }
  }

  /** A numeral, or what a variable of the macro with this name holds; it needs no ampersand. */
  static String numeral(String value) {
    return variable(value).orElse(resolved(value));
  }

  private static String resolved(String value) {
    return value.startsWith("&") ? variable(value.substring(1)).orElse(value) : value;
  }

  private static Optional<String> variable(String name) {
    Interpreter macro = Interpreter.getInstance();
    return Optional.ofNullable(macro == null ? null : macro.getVariableAsString(name));
  }

  private List<String> words() {
    return List.of(text.split("\\s+"));
  }
}
