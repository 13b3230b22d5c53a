# Stands in for the package manager: unpacks the archive that a formula names, if it has the
# formula's checksum, and installs it as the formula says.
#     ruby install.rb FORMULA PREFIX
require "digest"
require "fileutils"
require "pathname"
require "tmpdir"

# A folder of an installed formula.
class Folder < Pathname
  def install(files)
    FileUtils.cp_r(files, self, preserve: true)
  end

  def /(name)
    Folder.new(super)
  end
end

class Formula
  @facts = {}

  class << self
    attr_reader :facts, :own_test

    def inherited(formula)
      super
      Formula.instance_variable_set(:@made, formula)
      formula.instance_variable_set(:@facts, {})
    end

    def made
      @made
    end

    %i[desc url version sha256 license].each do |name|
      define_method(name) { |text| facts[name] = text }
    end

    def depends_on(macos:)
      facts[:macos] = macos
    end

    def test(&commands)
      @own_test = commands
    end
  end

  attr_reader :prefix, :commands

  def initialize(prefix)
    @prefix = Folder.new(prefix)
    @commands = []
  end

  def bin
    prefix/"bin"
  end

  def system(*command)
    commands << command.map(&:to_s)
  end
end

load ARGV[0]
formula = Formula.made.new(ARGV[1])
facts = Formula.made.facts
archive = facts[:url].delete_prefix("file://")
abort "another checksum" unless Digest::SHA256.file(archive).hexdigest == facts[:sha256]
abort "another version" unless File.basename(archive).include?("-#{facts[:version]}-")
Dir.mktmpdir do |folder|
  abort "not unpacked" unless Kernel.system("tar", "-C", folder, "--strip-components=1", "-xzf", archive)
  Dir.chdir(folder) { formula.install }
end
formula.instance_eval(&Formula.made.own_test)
missing = formula.commands.map(&:first).reject { |program| File.executable?(program) }
abort "not installed: #{missing.join(" ")}" if missing.any? || formula.commands.empty?
